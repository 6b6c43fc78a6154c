# completion_test.fish DIRECTORY [missing]: what the completion in DIRECTORY offers at the end of
# some command lines. With "missing" the root directory that it was made for is not there.

cd $argv[1]; or exit 1
source quask.fish
source quask-stat.fish

# The program, as far as the completion asks it.
function quask-stat
    printf '%s\n' 'NAME  name of the table' 'USED  slots' 'MAX  the most'
end

set -g count 0
set -g failures 0

# offers LINE EXPECTED...
function offers
    set -l got (complete -C $argv[1] | string replace -r '\t.*' '' | sort)
    set -g count (math $count + 1)
    if test "$got" != "$argv[2..]"
        echo "[$argv[1]] offers [$got] and not [$argv[2..]]"
        set -g failures (math $failures + 1)
    end
end

if test "$argv[2]" = missing
    offers 'quask '
    offers 'quask /'
else
    offers 'quask ' feed/eq feed/fx 'raw/blob 5' 'vec\\[3]'
    offers 'quask fee' feed/eq feed/fx
    offers 'quask /feed/e' /feed/eq
    offers 'quask raw/blob\\ ' 'raw/blob 5'
    offers 'quask "raw/blob ' 'raw/blob 5'
    offers 'quask ve' 'vec\\[3]'
    offers 'quask no_t'
    offers 'quask link'
    offers 'quask -p fee' feed/eq feed/fx
    offers 'quask --who fee' feed/eq feed/fx
    offers 'quask -- fee' feed/eq feed/fx
    offers 'quask feed/eq fee'
    offers 'quask -a fee'
    offers 'quask -pa fee'
    offers 'quask --who-all fee'
    offers 'quask -f out fee'
    offers 'quask -h fee'
    offers 'quask-stat fee' feed/eq feed/fx
    offers 'quask-stat -v fee' feed/eq feed/fx
    offers 'quask-stat -i 2 fee' feed/eq feed/fx
    offers 'quask-stat feed/eq fee'
end
offers 'quask-stat --noh' --noheadings
offers 'quask-stat -o N' NAME
offers 'quask-stat -o NAME,M' NAME,MAX
offers 'quask-stat -o +U' +USED
offers 'quask -' --help --who --who-all -a -e -f -h -p -t -w -x
offers 'quask --w' --who --who-all
offers 'quask -f quask-t' quask-table.5

echo "$count lines, $failures failures"
test $failures -eq 0

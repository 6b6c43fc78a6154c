# completion_test.zsh DIRECTORY [missing]: writes command lines into an interactive zsh that has the
# completion in DIRECTORY, completes each at its end and looks at what the line becomes. With
# "missing" the root directory that the completion was made for is not there.
emulate -R zsh
zmodload zsh/zpty || exit 1

lines=() expected=()

# becomes LINE EXPECTED MATCHES
becomes()
{
    lines+=($1)
    expected+=("$2|$3")
}

if [[ $2 == missing ]]; then
    becomes 'quask ' 'quask ' 0
    becomes 'quask /' 'quask /' 0
else
    becomes 'quask fee' 'quask feed/' 2
    becomes 'quask feed/e' 'quask feed/eq ' 1
    becomes 'quask /feed/e' 'quask /feed/eq ' 1
    becomes 'quask raw/b' 'quask raw/blob\ 5 ' 1
    becomes 'quask "raw/b' 'quask "raw/blob 5" ' 1
    becomes 'quask v' 'quask vec\\\[3\] ' 1
    becomes 'quask -p feed/e' 'quask -p feed/eq ' 1
    becomes 'quask -- feed/e' 'quask -- feed/eq ' 1
    becomes 'quask nothing' 'quask nothing' 0
    becomes 'quask no_t' 'quask no_t' 0
    becomes 'quask link' 'quask link' 0
    becomes 'quask feed/eq feed/e' 'quask feed/eq feed/e' 0
    becomes 'quask -a feed/e' 'quask -a feed/e' 0
    becomes 'quask-stat feed/e' 'quask-stat feed/eq ' 1
    becomes 'quask-stat -v feed/e' 'quask-stat -v feed/eq ' 1
    becomes 'quask-stat -i 2 feed/e' 'quask-stat -i 2 feed/eq ' 1
    becomes 'quask-stat feed/eq feed/e' 'quask-stat feed/eq feed/e' 0
fi
becomes 'quask-stat --noh' 'quask-stat --noheadings ' 1
becomes 'quask-stat -o NA' 'quask-stat -o NAME,' 1
becomes 'quask-stat -o NAME,USED,' 'quask-stat -o NAME,USED,MAX,' 1
becomes 'quask -f quask-t' 'quask -f quask-table.5 ' 1
becomes 'quask -pf quask-t' 'quask -pf quask-table.5 ' 1
becomes 'quask --he' 'quask --help ' 1
becomes 'quask --who-' 'quask --who-all ' 1

work=$(mktemp -d) || exit 1
print -rl -- $lines > $work/lines
cat > $work/setup << END
PS1= TERM=dumb LISTMAX=0
fpath=(${(qq)1} \$fpath)
cd ${(qq)1}
autoload -Uz compinit
compinit -D -u
unsetopt beep auto_list auto_menu
quask-stat() { print -rl -- 'NAME  name of the table' 'USED  slots' 'MAX  the most' }
counted() { matches=\$compstate[nmatches] }
zle-line-init() {
    local line
    while IFS= read -r line; do
        BUFFER=\$line CURSOR=\$#line
        matches=0 comppostfuncs=(counted)
        zle complete-word
        print -r -- "\$BUFFER|\$matches" >> ${(qq)work}/out
    done < ${(qq)work}/lines
    exit
}
zle -N zle-line-init
END

zpty shell zsh -f -i
zpty -w shell "source ${(q)work}/setup"
while zpty -r shell ignored; do :; done
zpty -d shell

out=("${(@f)$(< $work/out)}")
rm -r $work
failures=0
integer i
for ((i = 1; i <= $#lines; ++i)); do
    if [[ $out[i] != $expected[i] ]]; then
        print -r -- "[$lines[i]] became [$out[i]] and not [$expected[i]]"
        ((++failures))
    fi
done
print -r -- "$#lines lines, $failures failures"
((failures == 0))

# completion_test.bash DIRECTORY [missing]: what the completion in DIRECTORY offers for the last of
# some words. With "missing" the root directory that it was made for is not there.

cd "$1" || exit 1
# shellcheck source=/dev/null
source ./quask.bash
# shellcheck source=/dev/null
source ./quask-stat.bash

# The program, as far as the completion asks it.
quask-stat()
{
    [[ $* == -H ]] && printf '%s\n' 'NAME  name of the table' 'USED  slots' 'USE%  share'
}

failures=0 count=0
compopt() { options=$*; }

# offers WORDS EXPECTED OPTIONS: completes the last of the array WORDS. EXPECTED is what is offered,
# sorted, with a "|" after each; OPTIONS is what compopt gets.
offers()
{
    local -n words=$1
    local options=''
    COMP_WORDS=("${words[@]}") COMP_CWORD=$((${#words[@]} - 1)) COMPREPLY=()
    "_${words[0]//-/_}"
    local got=''
    if ((${#COMPREPLY[@]} > 0)); then
        got=$(printf '%s\n' "${COMPREPLY[@]}" | LC_ALL=C sort | tr '\n' '|')
    fi
    ((++count))
    if [[ $got != "$2" || $options != "$3" ]]; then
        printf '[%s] offers [%s] (%s) and not [%s] (%s)\n' "${words[*]}" "$got" "$options" "$2" "$3"
        ((++failures))
    fi
}

expect()
{
    # shellcheck disable=SC2034  # used by its name
    local line=("${@:1:$#-1}")
    offers line "${!#}" ''
}

expect_file()
{
    # shellcheck disable=SC2034
    local line=("${@:1:$#-1}")
    offers line "${!#}" '-o filenames'
}

if [[ $2 == missing ]]; then
    expect quask '' ''
    expect quask / ''
else
    expect quask '' 'feed/eq|feed/fx|raw/blob\ 5|vec\\\[3\]|'
    expect quask fee 'feed/eq|feed/fx|'
    expect quask / '/feed/eq|/feed/fx|/raw/blob\ 5|/vec\\\[3\]|'
    expect quask /feed/e '/feed/eq|'
    expect quask raw/blob 'raw/blob\ 5|'
    expect quask 'raw/blob\ ' 'raw/blob\ 5|'
    expect quask '"raw/blob ' 'raw/blob 5|'
    expect quask "'raw/blob " 'raw/blob 5|'
    expect quask '"vec' 'vec\\[3]|'
    expect quask '"vec\[' 'vec\\[3]|'
    expect quask "'vec" 'vec\[3]|'
    expect quask 'vec\\\[' 'vec\\\[3\]|'
    expect quask 'vec[' ''
    expect quask no_table ''
    expect quask link ''
    expect quask -p fee 'feed/eq|feed/fx|'
    expect quask --who fee 'feed/eq|feed/fx|'
    expect quask -- fee 'feed/eq|feed/fx|'
    expect quask -- - ''
    expect quask feed/eq fee ''
    expect quask -a fee ''
    expect quask -pa fee ''
    expect quask --who-all fee ''
    expect quask -f out fee ''
    expect quask -h fee ''
    expect quask-stat fee 'feed/eq|feed/fx|'
    expect quask-stat raw/blob 'raw/blob\ 5|'
    expect quask-stat -v fee 'feed/eq|feed/fx|'
    expect quask-stat -i 2 fee 'feed/eq|feed/fx|'
    expect quask-stat -ni 2 fee 'feed/eq|feed/fx|'
    expect quask-stat --output NAME fee 'feed/eq|feed/fx|'
    expect quask-stat -- -o fee ''
    expect quask-stat feed/eq fee ''
fi
expect quask-stat -i '' ''
expect quask-stat --count '' ''
expect quask-stat --no '--noheadings|'
expect quask-stat --ve '--verbose|--version|'
expect quask - '--help|--who|--who-all|-a|-e|-f|-h|-p|-t|-w|-x|'
expect quask --w '--who|--who-all|'
expect quask feed/eq - '--help|--who|--who-all|-a|-e|-f|-h|-p|-t|-w|-x|'
expect_file quask -f quask-t 'quask-table.5|'
expect_file quask -pf quask-t 'quask-table.5|'
expect_file quask feed/eq -f quask-t 'quask-table.5|'

expect_column()
{
    # shellcheck disable=SC2034
    local line=("${@:1:$#-1}")
    offers line "${!#}" '-o nospace'
}
expect_column quask-stat -o '' 'NAME|USE%|USED|'
expect_column quask-stat --output US 'USE%|USED|'
expect_column quask-stat -rno +US '+USE%|+USED|'
expect_column quask-stat -o NAME,USE 'NAME,USE%|NAME,USED|'

printf '%d lines, %d failures\n' "$count" "$failures"
((failures == 0))

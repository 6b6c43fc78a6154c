# options_test.bash QUASK MANUAL COMPLETION: the help text, the manual page and what the bash
# completion offers are the same options.

quask=$1 manual=$2 completion=$3

# One option per line, from the lines of the help text that begin with one.
in_help()
{
    "$quask" --help | grep -E '^ +-' | grep -oE '(^ +|, )--?[a-zA-Z][a-z-]*' | grep -oE -- '-.*' | sort -u
}

# From the list of options in the manual page: .It Fl w , -who
in_manual()
{
    sed -n '/^\.Sh DESCRIPTION/,/^\.Sh [^D]/s/^\.It Fl \(.*\)/\1/p' "$manual" | sed 's/ Ar .*//; s/ Ns .*//' |
        tr -d ' ' | tr ',' '\n' | sed 's/^/-/' | sort -u
}

# From all of the manual page but two examples: -ep, joined options, and --wh, an ambiguous one.
anywhere_in_manual()
{
    grep -E '^\.(Fl|Op Fl|Pq Fl|It Fl) ' "$manual" | sed 's/ Ar .*//; s/ N[os] .*//; s/^\.[A-Za-z ]*Fl //' |
        tr -d ' .' | tr ',|' '\n\n' | grep -vx -e '' -e ep -e -wh | sed 's/^/-/' | sort -u
}

in_completion()
{
    # shellcheck source=/dev/null
    source "$completion"
    compopt() { :; }
    COMP_WORDS=(program -) COMP_CWORD=1
    "$(complete -p "$(basename "$completion" .bash)" | grep -oE '_quask[a-z_]*')"
    printf '%s\n' "${COMPREPLY[@]}" | sort -u
}

failures=0

same()
{
    if ! difference=$(diff <(printf '%s\n' "$2") <(printf '%s\n' "$4")); then
        printf 'Options in %s (<) and in %s (>):\n%s\n' "$1" "$3" "$difference"
        failures=1
    fi
}

help=$(in_help)
if [[ $(wc -l <<< "$help") -lt 11 ]]; then
    printf 'Only these options in the help text:\n%s\n' "$help"
    failures=1
fi
same 'the help text' "$help" "the manual page's list" "$(in_manual)"
same 'the help text' "$help" 'all of the manual page' "$(anywhere_in_manual)"
same 'the help text' "$help" 'the bash completion' "$(in_completion)"
exit "$failures"

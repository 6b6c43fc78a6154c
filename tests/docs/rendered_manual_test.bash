# rendered_manual_test.bash PAGE...: groff, which most systems show manual pages with, and mandoc make
# the same words of each page, at 80 and at 100 columns. Where they differ, one of them has run two
# columns of a table into each other, or has put a quotation mark where it does not belong. Ends with
# 77 when one of the two is not installed.

export LC_ALL=C.UTF-8
for formatter in groff mandoc; do
    if ! command -v "$formatter" > /dev/null; then
        echo "skipped: $formatter is not installed"
        exit 77
    fi
done

# by_groff WIDTH PAGE, by_mandoc WIDTH PAGE: the page as text of that width. groff must not hyphenate:
# the definition keeps the macros from turning it on again.
by_groff()
{
    printf '.nh\n.de hy\n..\n' | cat - "$2" | groff -mandoc -Tutf8 -P-c -rLL="$1n"
}

by_mandoc()
{
    mandoc -Tutf8 -Owidth="$1" "$2"
}

# One word per line, of the text between the page's header and footer. Bold and underlined characters
# are written twice; the dash after a page's name and hard spaces differ by taste, and a line may end
# at a hyphen.
words()
{
    sed $'s/.\b//g; s/\u2010/-/g; s/\u2014/\u2013/g; s/\u00a0/ /g; s/-/- /g' | sed '1d; $d' |
        tr -s ' \t\n' '\n'
}

failures=0
for page in "$@"; do
    for width in 80 100; do
        if [[ $(by_groff "$width" "$page" | words | wc -l) -lt 1000 ]]; then
            printf '%s, %s columns: nothing to compare\n' "$page" "$width"
            ((++failures))
        elif ! diff <(by_groff "$width" "$page" | words) <(by_mandoc "$width" "$page" | words); then
            printf '%s, %s columns: groff (<) and mandoc (>) differ\n' "$page" "$width"
            ((++failures))
        fi
    done
done
((failures == 0))

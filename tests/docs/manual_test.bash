# manual_test.bash mandoc|groff PAGE...: the pages are clean to that formatter, and refer to each
# other by names that exist. Ends with 77 when it is not installed.

formatter=$1
shift
if ! command -v "$formatter" > /dev/null; then
    echo "skipped: $formatter is not installed"
    exit 77
fi

complaints=
for page in "$@"; do
    case $formatter in
        mandoc)
            # Which other manuals there are depends on the machine.
            complaints+=$(mandoc -Tlint "$page" 2> /dev/null | grep -v 'STYLE: referenced manual not found')
            ;;
        groff)
            complaints+=$(groff -mandoc -ww -z "$page" 2>&1)
            ;;
    esac
    while read -r _ name section _; do
        if [[ ! -f ${page%/*}/$name.$section ]]; then
            complaints+="$page refers to $name($section)"$'\n'
        fi
    done < <(grep '^\.Xr quask' "$page")
done
if [[ -n $complaints ]]; then
    printf '%s\n' "$complaints"
    exit 1
fi

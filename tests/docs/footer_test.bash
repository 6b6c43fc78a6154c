# footer_test.bash VERSION PAGE...: the installed pages say at their end which version they describe,
# since the tool itself has no option for that. Ends with 77 when groff is not installed.

version=$1
shift
if ! command -v groff > /dev/null; then
    echo "skipped: groff is not installed"
    exit 77
fi

failures=0
for page in "$@"; do
    footer=$(groff -mandoc -Tascii -P-c "$page" | grep . | tail -n 1)
    if [[ $footer != "quask $version "* ]]; then
        printf '%s ends with [%s], which does not name the version %s\n' "$page" "$footer" "$version"
        ((++failures))
    fi
done
((failures == 0))

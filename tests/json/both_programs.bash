#!/usr/bin/env bash
# Runs quask-json ($QUASK_JSON) as well as quask ($QUASK) with these arguments, and is quask to whoever
# called it, unless the two differ in what they say on standard error or in how they end: then it says
# that on standard output. What quask says of a failure on standard output quask-json says on standard
# error.

messages() {
    sed "s|^$1:|PROGRAM:|; s|^[^ ]*$(basename "$1"):|PROGRAM:|" | sort
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
{ "$QUASK" "$@" > "$work/text" 2> "$work/text_errors"; } 2> /dev/null
text_status=$?
{ "$QUASK_JSON" "$@" > "$work/json" 2> "$work/json_errors"; } 2> /dev/null
json_status=$?

expected=$({ grep -a -e ' validation failed: ' -e '^You should run this' "$work/text"; cat "$work/text_errors"; } | messages "$QUASK")
if [ "$text_status" != "$json_status" ] || [ "$expected" != "$(messages "$QUASK_JSON" < "$work/json_errors")" ]; then
    printf 'quask-json %s: status %s and not %s:\n' "$*" "$json_status" "$text_status"
    cat "$work/json_errors"
fi
if ! jq . "$work/json" > /dev/null; then
    printf 'quask-json %s does not print JSON:\n' "$*"
    cat "$work/json"
fi
rm -rf "$work"
exec "$QUASK" "$@"

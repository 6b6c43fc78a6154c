#!/usr/bin/env bash
# inside.bash BINARY ROOT SUBJECT...: what scripts/attack runs inside of namespaces of its own. The
# attacks of a subject are functions in attacks/SUBJECT.bash that begin with its name.
. "$(dirname "$0")/frame.bash"

quask=$1 root=$2
shift 2
prepare
for subject in "$@"; do
    attacks=tests/attack/attacks/$subject.bash
    # shellcheck source=/dev/null
    . "$attacks"
    printf '\n%s\n' "${subject^}"
    for attack in $(grep -o "^${subject}_[a-z0-9_]*" "$attacks"); do
        empty_root
        "$attack"
    done
done
printf '\n%d of %d attacks held, in %d s\n' "$held" $((held + broken)) "$SECONDS"
[ "$broken" -eq 0 ]

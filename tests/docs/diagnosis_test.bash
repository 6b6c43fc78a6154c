# diagnosis_test.bash QUASK WITHOUT_ATOMICS LIVE_WRITER MAPPING_CLIENT DOCUMENT: what the document shows of each fault is
# what quask prints. A case is a comment <!-- fault: COMMANDS --> and, after it, a block that begins
# with the command that an operator gives. COMMANDS bring the fault about, run by bash in the directory
# of the table "feed/eq", which is sound at the beginning of each case. Lines are compared in any order, as
# directories name what is in them in any order.

# The client reports are to meet no processes but the test's own: all of this runs in a namespace. Where
# the system allows none, the reports on all tables are left out.
if [ -z "${OWN_PROCESSES-}" ]; then
    export OWN_PROCESSES=yes
    for rights in '' --map-root-user; do
        own_processes=(unshare ${rights:+"$rights"} --pid --fork --kill-child --mount-proc)
        "${own_processes[@]}" true 2> /dev/null && exec "${own_processes[@]}" "$BASH" "$0" "$@"
    done
    OWN_PROCESSES=no
fi

# shellcheck disable=SC2034  # the faults use it
without_atomics=$2
sound_quask=$1 live_writer=$3 mapping_client=$4 document=$5
export LC_ALL=C J5_CHROOT=1
unset DOVAN_DEBUG POSIXLY_CORRECT
QUASK_TEST_ROOT=$(mktemp -d /dev/shm/quask-test.XXXXXX)
export QUASK_TEST_ROOT
client=
trap 'release; chmod -R u+rwX "$QUASK_TEST_ROOT" 2> /dev/null; rm -rf "$QUASK_TEST_ROOT"' EXIT
ulimit -c 0

quask() {
    "${rights[@]}" "$quask" "$@"
}

# For the faults: the tool runs without the rights that root has over files of any owner.
without_privileges() {
    [ "$(id -u)" -ne 0 ] || rights=(setpriv --inh-caps=-all --bounding-set=-all)
}

# For the faults. put OFFSET BYTE... writes these bytes, in hexadecimal, into the file named first.
put() {
    local file=$1 offset=$2
    shift 2
    printf '%b' "${@/#/\\x}" | dd of="$file" bs=1 seek="$offset" conv=notrunc status=none
}

# hold PROGRAM FILE:MODE...: a process that runs a copy of the client by this name has the files mapped.
hold() {
    local program=$1
    shift
    mkdir -p "$(dirname "$program")"
    cp "$mapping_client" "$program"
    exec {client_input}> >(exec "$program" "$@" > ready)
    client=$!
    until grep -q ready ready 2> /dev/null; do sleep 0.02; done
    rm ready
}

release() {
    [ -n "$client" ] || return
    exec {client_input}>&-
    wait "$client"
    client=
}

# What the command prints, errors included, and how it ends if that is not by itself. The shell's own
# words on a signal are left out.
outcome() {
    (eval "$1") 2>&1 | grep -v -e 'Aborted' -e '^$' |
        sed "s|$QUASK_TEST_ROOT|/dev/shm/quask|g" | sort
}

cases=0 failures=0
check() {
    local fault=$1 command=$2 expected actual
    ((++cases))
    if [[ $OWN_PROCESSES == no && $command == *' -a'* ]]; then
        printf 'skipped: %s\n' "$command"
        return
    fi
    chmod -R u+rwX "$QUASK_TEST_ROOT" 2> /dev/null
    rm -rf "${QUASK_TEST_ROOT:?}"/*
    "$live_writer" "$QUASK_TEST_ROOT/feed/eq" 8 4 3 2 < /dev/null > /dev/null
    cd "$QUASK_TEST_ROOT/feed/eq" || exit 1
    quask=$sound_quask rights=()
    eval "$fault"
    cd / || exit 1
    expected=$(sort <<< "${3//12227/$client}")  # the client of the document's examples
    actual=$(outcome "$command")
    release
    if [ "$actual" != "$expected" ]; then
        printf '%s\n$ %s\n' "$fault" "$command"
        diff <(printf '%s\n' "$expected") <(printf '%s\n' "$actual") | sed 's/^</told:   /; s/^>/printed:/'
        ((++failures))
    fi
}

fault='' command='' expected=''
while IFS= read -r line; do
    case $line in
        '<!-- fault: '*' -->')
            fault=${line#<!-- fault: } fault=${fault% -->} ;;
        '$ '*)
            command=${line#\$ } expected='' ;;
        '```')
            if [ -n "$command" ]; then
                check "$fault" "$command" "${expected%$'\n'}"
                command=
            fi ;;
        *)
            expected+=$line$'\n' ;;
    esac
done < "$document"
printf '%d cases, %d failures\n' "$cases" "$failures"
((cases >= 20 && failures == 0))

#!/usr/bin/env bash
# show.bash PROGRAMS DIRECTORY [all]: starts the programs of the demonstration on tables below the
# directory, and shows what the tool says about them. With "all" also the report on all tables, which
# without process namespaces would show other tables of this machine. scripts/demo runs it.

bin=$1 directory=$2 all=$3
export QUASK_DEMO_ROOT=$directory/tables
interrupted='' inputs=() pids=()

# Ends the programs by the end of their input, and waits for them: they clean up after themselves.
clean_up() {
    local status=$? input
    trap '' INT TERM HUP PIPE
    for input in "${inputs[@]}"; do
        exec {input}>&-
    done
    [ ${#pids[@]} -eq 0 ] || wait "${pids[@]}" 2> /dev/null
    exit "$status"
}
trap clean_up EXIT
trap '' INT HUP  # that is up to who runs this
trap 'exit 130' TERM
trap 'exit 141' PIPE

# start PROGRAM ARGUMENT...: in the background, until it says that it is ready.
start() {
    local log input
    log=$(mktemp -p "$directory") || exit 1
    # An interrupt waits until it is known what is to be ended.
    trap 'interrupted=yes' TERM
    exec {input}> >(exec "$@" > "$log" 2>&1)
    pids+=("$!") inputs+=("$input")
    trap 'exit 130' TERM
    [ -z "$interrupted" ] || exit 130
    until grep -qx ready "$log"; do
        if ! kill -0 "${pids[-1]}" 2> /dev/null; then
            cat "$log" >&2
            exit 1
        fi
        sleep 0.02
    done
}

# show LINES WORDS PROGRAM ARGUMENT...: says what is shown, the command, and the first lines of its output.
show() {
    local lines=$1 words=$2 program=$3
    shift 3
    printf '\n# %s\n$ %s %s\n' "$words" "$program" "$*" || exit 1
    "$bin/$program" "$@" > "$directory/shown" || exit 1
    head -n "$lines" "$directory/shown" || exit 1
    if [ "$(wc -l < "$directory/shown")" -gt "$lines" ]; then
        { echo ... && tail -n 2 "$directory/shown"; } || exit 1
    fi
    sleep 0.3
}

start "$bin/price_feed" --burst 0 prices

show 6 "The table as it is now, one line per bucket: slot-->value, in hexadecimal bytes" quask prices
show 40 "The same a moment later, with values by their type; * marks one that is being rewritten" quask -p prices
if [ -x "$bin/quask-json" ] && command -v jq > /dev/null; then
    highest='[inputs.elements[]?] | max_by(.value | split(" ")[1] | tonumber) | {slot, value}'
    printf '\n# %s\n$ %s\n' "The same as JSON, for jq: which price is the highest, and which slot holds it" \
        "quask-json prices | jq -nc '$highest'" || exit 1
    "$bin/quask-json" prices | jq -nc "$highest" || exit 1
fi
show 6 "And again: the prices have changed" quask -p prices
show 60 "What the writer says about the table in its four headers" quask -x prices

start "$bin/attach_client" shadow prices
start "$bin/attach_client" keyshadow prices
start "$bin/attach_client" reader prices
show 20 "Who has the table mapped, now that a reader of each role has joined the writer" quask -w prices
if [ -n "$all" ]; then
    show 20 "The same for all tables; in the meantime the writer has sent more notifications" quask -a
fi
if [ -x "$bin/quask-stat" ]; then
    # Who is not root may not look into all processes, and is told so.
    show 6 "How full the table is, who writes and reads it, and what is wrong with it" quask-stat prices 2>&1
    show 6 "What happens to it in a second" \
        quask-stat -i 1 -c 1 -o NAME,USED,UPDATES/S,NOTIFIED/S,NET/S,WRITER prices 2>&1
    printf '\n# %s\n$ %s\n' "How long its chains are" "quask-stat -v prices | sed -n '/^Walk/,\$p'" || exit 1
    "$bin/quask-stat" -v prices 2> /dev/null | sed -n '/^Walk/,$p' || exit 1
    sleep 0.3
fi

printf '\n%s\n%s\n%s\n%s\n' \
    "# To try more, start a writer that also runs at full speed for a part of each second:" \
    "\$ $bin/price_feed prices &" \
    "\$ $bin/quask -p prices" \
    "\$ kill %1"

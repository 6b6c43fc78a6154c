# Signals while the output is not taken.

# new_pipe: a pipe of the least size, whose ends are the descriptors $taken (for reading) and $given.
new_pipe() {
    local both
    mkfifo "$work/fifo"
    exec {both}<> "$work/fifo" {taken}< "$work/fifo" {given}> "$work/fifo" {both}>&-
}

close_pipe() {
    exec {taken}<&- {given}>&-
    rm "$work/fifo"
}

# fill_pipe: so that no byte more fits in.
fill_pipe() {
    dd if=/dev/zero of="$work/fifo" bs=4096 count=16 oflag=nonblock 2> /dev/null
}

# scan_in_background TABLE: its output goes to the pipe; its number is $scan.
scan_in_background() {
    "$quask" -e "$1" 1>&"$given" 2> "$err" &
    scan=$!
}

# Waits until the scan sleeps, which it does in a write only.
wait_until_blocked() {
    until grep -q '^[0-9]* (quask) S' "/proc/$scan/stat"; do sleep 0.01; done
}

# terminate SIGNAL: sends it to the scan, and SIGKILL when that is still there after 10 s. Sets $status
# and $milliseconds.
terminate() {
    local start=${EPOCHREALTIME/./} watch
    kill -"$1" "$scan"
    { sleep 10; kill -KILL "$scan"; } 2> /dev/null &
    watch=$!
    wait "$scan" 2> /dev/null
    status=$?
    milliseconds=$(((${EPOCHREALTIME/./} - start) / 1000))
    kill "$watch" 2> /dev/null
    wait "$watch" 2> /dev/null
}

ends_with_a_full_pipe() {
    hostile_table rows "$root/t" 30000 8
    attack 'SIGTERM under a scan that waits for a full pipe' 'SIGTERM after a second or so'
    new_pipe
    scan_in_background t
    wait_until_blocked
    terminate TERM
    verdict "status $status after $milliseconds ms" [ "$status" -eq 143 -a "$milliseconds" -le 4000 ]
    close_pipe
}

# The scan has one line in its buffer and works on, as the pipe is full already.
ends_with_a_full_pipe_and_text_left() {
    local signal
    start rewritten_ring "$root/t" 200000 all
    for signal in TERM HUP; do
        attack "SIG$signal under a scan whose buffer holds text for a full pipe" \
            "SIG$signal after a second or so"
        new_pipe
        fill_pipe
        scan_in_background t
        sleep 0.2
        terminate $signal
        verdict "status $status after $milliseconds ms" \
            [ "$status" -eq $((128 + $(kill -l $signal))) -a "$milliseconds" -le 4000 ]
        close_pipe
    done
    stop
}

# Its reader takes nothing for 300 ms after the signal, and then all.
ends_without_torn_lines() {
    local torn=0 signalled=0 i read
    hostile_table rows "$root/t" 2000 5000
    attack 'SIGTERM under a scan whose reader pauses for 300 ms, 10 runs' 'no torn line'
    for ((i = 0; i < 10; ++i)); do
        new_pipe
        scan_in_background t
        head -c $((100000 + 70001 * i)) <&"$taken" > "$out"
        wait_until_blocked
        exec {given}>&-
        { sleep 0.3; cat; } <&"$taken" >> "$out" &
        read=$!
        terminate TERM
        wait $read
        exec {taken}<&-
        rm "$work/fifo"
        signalled=$((signalled + (status == 143)))
        [ -z "$(tail -c 1 "$out")" ] || torn=$((torn + 1))
    done
    verdict "$torn torn, $signalled ended by the signal" [ "$torn" -eq 0 -a "$signalled" -eq 10 ]
}

ends_by_a_bus_error_from_outside() {
    hostile_table rows "$root/t" 30000 8
    attack 'SIGBUS sent by another process, scan' 'ended by SIGBUS'
    new_pipe
    scan_in_background t
    wait_until_blocked
    terminate BUS
    verdict "status $status after $milliseconds ms" [ "$status" -eq 135 ]
    close_pipe
}

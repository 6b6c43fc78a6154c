# Outputs that are limited, do not block, or are gone; and what is written to standard error.

outputs_with_a_file_size_limit() {
    hostile_table rows "$root/t" 1000 8
    attack 'RLIMIT_FSIZE of 4 KiB, scan into a file' '"Error writing to standard output", status 1'
    under=(prlimit --fsize=4096)
    run t
    verdict "$(given)" \
        eval '[ "$status" -eq 1 ] && [ "$(cat "$err")" = "Error writing to standard output" ]'
    attack 'RLIMIT_FSIZE of no byte, -f' 'status 0'
    under=(prlimit --fsize=0)
    run -f "$work/report"
    under=()
    verdict "$(given)" [ "$status" -eq 0 ]
    rm -f "$work/report"
}

outputs_to_a_standard_error_that_does_not_block() {
    local i reader
    for ((i = 0; i < 3000; ++i)); do
        mkdir "$root/a-table-whose-name-is-rather-long-$i"
        : > "$root/a-table-whose-name-is-rather-long-$i/slots"
    done
    attack 'the list of 3,000 tables on a standard error that does not block' 'all of them, status 1'
    mkfifo "$work/fifo"
    { sleep 0.3; cat; } < "$work/fifo" > "$out" &
    reader=$!
    measured "$work/measured" 60 3000 nonblocking 2 "$quask" 2> "$work/fifo"
    wait $reader
    read -r status _ < "$work/measured"
    verdict "status $status, $(grep -c '^  - a-table.*[0-9]$' "$out") names" \
        [ "$status" -eq 1 -a "$(grep -c '^  - a-table.*[0-9]$' "$out")" -eq 3000 ]
    rm "$work/fifo"
}

outputs_without_descriptors() {
    local both reader
    attack 'no descriptors, a full pipe that does not block, -h' \
        'waits without the processor, then the help'
    mkfifo "$work/fifo"
    exec {both}<> "$work/fifo"
    dd if=/dev/zero of="$work/fifo" bs=4096 count=16 oflag=nonblock 2> /dev/null
    { sleep 2; timeout 3 cat; } < "$work/fifo" > "$out" &
    reader=$!
    measured "$work/measured" 60 3000 nonblocking 1 prlimit --nofile=0 "$quask" -h > "$work/fifo" 2> "$err"
    exec {both}>&-
    wait $reader
    read -r status milliseconds processor _ < "$work/measured"
    verdict "status $status, $processor ms of the processor in $milliseconds ms" \
        eval '[ "$status" -eq 0 ] && [ "$processor" -lt 300 ] && grep -q "Display this helper" "$out"'
    rm "$work/fifo"
}

outputs_in_a_chroot() {
    local jail=$work/jail closed
    mkdir -p "$jail/proc" "$jail$root" "$jail/reports"
    chmod 777 "$jail/reports"
    cp "$quask" "$jail/quask"
    mount -t proc proc "$jail/proc"
    for closed in '>&-' '<&- >&-' '<&- >&- 2>&-'; do
        attack "a chroot without /dev/null, $closed, -a -f FILE of a user" 'FILE holds the report alone'
        rm -f "$jail/reports/report"
        measured "$work/measured" 60 3000 bash -c "exec chroot --userspec=65534:65534 '$jail' \
            /quask -a -f /reports/report $closed" 2> "$err"
        read -r status _ < "$work/measured"
        verdict "status $status, \"$(head -n 1 "$jail/reports/report" 2>&1)\"" \
            [ "$(cat "$jail/reports/report")" = 'No Quasks' ]
    done
    umount "$jail/proc"
    rm -rf "$jail"
}

outputs_of_a_name_with_a_newline() {
    local job name=$'first\nsecond: 0\nthird' torn
    hostile_table making "$root/$name" 1
    for job in scan -x -w; do
        attack "a newline in a table's name, ${job/scan/scan} with DOVAN_DEBUG=9" \
            'each message on one line'
        under=(env DOVAN_DEBUG=9)
        run ${job/scan/-e}
        torn=$(grep -cvE '^Quask[^ ]*( [^ ]+)* [0-9]: [A-Za-z]' "$err")
        verdict "status $status, $torn of $(wc -l < "$err") lines are none" [ "$torn" -eq 0 ]
    done
    under=()
}

# The pipe's reader has ended before the run begins.
outputs_to_a_standard_error_that_is_gone() {
    local job gone plain
    hostile_table making "$root/t" 1
    for job in scan -x -w -a; do
        words_for $job t
        attack "nobody reads standard error, ${words[*]} with DOVAN_DEBUG=9" \
            'the same report and status as without'
        run "${words[@]}"
        plain=$(md5sum < "$out")
        exec {gone}> >(:)
        wait $!
        DOVAN_DEBUG=9 measured "$work/measured" 60 3000 "$quask" "${words[@]}" > "$out" 2>&"$gone"
        exec {gone}>&-
        read -r status _ < "$work/measured"
        verdict "$(err=/dev/null given)" [ "$status" -eq 0 -a "$(md5sum < "$out")" = "$plain" ]
    done
}

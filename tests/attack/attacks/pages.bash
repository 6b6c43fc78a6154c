# Pages of table files that cannot be read: holes on a full file system, failing devices, files cut
# short; also where the parent has blocked SIGBUS.

# A table on a file system of its own, with a hole in its file $1, which no page is left for.
full_file_system() {
    local file=$1
    mkdir "$root/full"
    mount -t tmpfs -o size=128k full "$root/full"
    hostile_table rows "$root/full" 40 1000
    if [ "$file" = vandral.2 ]; then
        rm "$root/full/$file" && truncate -s 4096 "$root/full/$file"
    else
        fallocate --punch-hole --offset 20480 --length 4096 "$root/full/$file"
    fi
    dd if=/dev/zero of="$root/full/rest" bs=4096 2> /dev/null
}

# could_not_read FILE: whether the last run ended with one line that names the file.
could_not_read() {
    [ "$status" -eq 1 ] && [ "$(wc -l < "$err")" -eq 1 ] && grep -q 'could not be read' "$err" &&
        grep -qF "$1" "$err"
}

pages_of_a_full_file_system() {
    full_file_system vandral.2
    hostile_table making "$root/t" 1
    attack 'a hole in vandral.2, full file system, -a' 'the other tables, status 0'
    run -a
    verdict "$(given)" eval '[ "$status" -eq 0 ] && grep -q slots:1000001 "$out" && [ ! -s "$err" ]'
    attack 'the same, a client has the table mapped' 'its figures NA, and the other tables'
    client "$root/full/slots:r"
    run -a
    verdict "$(given), $(grep -A 1 /full "$out" | grep -o 'secondary.*')" eval '[ "$status" -eq 0 ] &&
        grep -q slots:1000001 "$out" && grep -q secondary_notifications:NA "$out" && [ ! -s "$err" ]'
    attack 'the same, -w' 'the figures NA, the clients, status 0'
    run -w full
    verdict "$(given)" eval '[ "$status" -eq 0 ] && grep -q "Reader: mapping_client" "$out" &&
        grep -q secondary_notifications:NA "$out" && [ ! -s "$err" ]'
    stop
    attack 'the same, -x' 'one line that it could not be read, status 1'
    run -x full
    verdict "$(given)" could_not_read "$root/full/vandral.2"
    umount "$root/full"
}

pages_of_a_scan_on_a_full_file_system() {
    full_file_system slots
    attack 'a hole in slots, full file system, scan' \
        'the lines before, one line that it could not be read, status 1'
    run full
    verdict "$(given)" eval 'could_not_read "$root/full/slots" &&
        [ "$(grep -c "^bucket.*none$" "$out")" -ge 15 ]'
    attack 'the same, SIGBUS blocked' 'the same'
    under=(env --block-signal=BUS)
    run full
    under=()
    verdict "$(given)" eval 'could_not_read "$root/full/slots" &&
        [ "$(grep -c "^bucket.*none$" "$out")" -ge 15 ]'
    umount "$root/full"
}

# An ext4 file system on a device that has lost its end.
pages_of_a_failing_device() {
    local image=$work/image
    truncate -s 16M "$image"
    mkfs.ext4 -q -O ^has_journal "$image"
    mkdir "$root/device"
    if ! mount -o loop "$image" "$root/device"; then
        echo 'skipped: no loop device for a device that fails'
        return
    fi
    hostile_table making "$root/device" 2
    umount "$root/device"
    # What is left on it are the file system's own tables, read by then; the files come after those.
    mount -o loop "$image" "$root/device"
    ls -lR "$root/device" > /dev/null
    truncate -s 600K "$image"
    hostile_table making "$root/t" 1
    attack 'the device of a table fails, -a' 'the other tables, status 0'
    run -a
    verdict "$(given)" eval '[ "$status" -eq 0 ] && grep -q slots:1000001 "$out" && [ ! -s "$err" ]'
    for job in scan -x; do
        words_for $job device
        attack "the same, ${words[*]}" 'one line that it could not be read, status 1'
        run "${words[@]}"
        verdict "$(given)" could_not_read "$root/device/"
    done
    umount "$root/device"
    rm "$image"
}

pages_of_a_sparse_table() {
    local before after
    hostile_table sparse "$root/t" $((32 << 20)) 1
    before=$(du -sk "$root/t" | cut -f 1)
    attack 'a lookaside value of 32 MiB that is a hole, -x' 'no more than 64 KiB allocated'
    run -x t
    after=$(du -sk "$root/t" | cut -f 1)
    verdict "$before KiB before, $after KiB after, status $status" \
        [ "$status" -eq 0 -a $((after - before)) -le 64 ]
}

pages_cut_off_at_every_call() {
    local job block
    reset() {
        hostile_table making "$root/t" 1
    }
    for job in scan -x; do
        words_for $job t
        attack "slots emptied before each of the last calls, ${words[*]}" \
            'the report, or an error that says why'
        at_calls 40 ": > $root/t/slots" "${words[@]}"
        verdict "$(unexplained) of 40 unexplained" [ "$(unexplained)" -eq 0 ]
    done
    for block in --block-signal=BUS --ignore-signal=BUS; do
        attack "the same with env $block, scan" 'the report, or an error that says why'
        under=(env "$block")
        at_calls 40 ": > $root/t/slots" -e t
        under=()
        verdict "$(unexplained) of 40 unexplained" [ "$(unexplained)" -eq 0 ]
    done
    for job in -w -a; do
        words_for $job t
        attack "slots emptied before each of the last calls, ${words[*]}" 'the report, status 0'
        at_calls 40 ": > $root/t/slots" "${words[@]}"
        verdict "$(grep -c '^=== 0' "$runs") of 40 with status 0" [ "$(grep -c '^=== 0' "$runs")" -eq 40 ]
    done
}

# The scan waits while nobody takes its output, so that each growth meets it once.
pages_cut_off_after_many_mappings() {
    local everything taken slots=30000 i scan
    hostile_table rows "$root/t" $slots 100
    mkfifo "$work/fifo"
    exec {everything}<> "$work/fifo" {taken}< "$work/fifo"
    attack 'a table that grew 20 times under a scan is cut short' \
        'the lines before, "Quask table file ... was cut short ...", status 1'
    measured "$work/measured" 120 3000 env DOVAN_DEBUG=Quask-t=5 "$quask" t > "$work/fifo" 2> "$err" &
    scan=$!
    exec {everything}>&-
    for ((i = 1; i <= 20; ++i)); do
        head -c 300000 <&$taken > /dev/null
        grow_table "$root/t" $((slots + i))
    done
    head -c 300000 <&$taken > /dev/null
    truncate -s 4096 "$root/t/slots"
    cat <&$taken > "$out"
    exec {taken}<&-
    wait $scan
    read -r status _ < "$work/measured"
    verdict "status $status, $(grep -c resizing "$err") times mapped again, \"$(tail -n 1 "$err")\"" \
        eval '[ "$status" -eq 1 ] && [ "$(tail -n 1 "$err")" = \
            "Quask table file $root/t/slots was cut short while it was being read" ]'
    rm "$work/fifo"
}

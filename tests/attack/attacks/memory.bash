# Memory and time that a table's contents could decide on.

memory_of_a_ring() {
    local which waited
    for which in few all; do
        attack "a ring of 1,000,000 slots of which a writer rewrites ${which/few/40} links, scan for 5 s" \
            '128 MiB at most'
        start rewritten_ring "$root/t" 1000000 $which
        seconds=5
        run_into /dev/null "$quask" t
        seconds=60
        verdict "$mebibytes MiB, status $status after $milliseconds ms" [ "$mebibytes" -le 128 ]
        attack 'the writer of the ring stops' 'corruption is found, SIGABRT'
        measured "$work/measured" 60 3000 "$quask" t > "$out" 2> "$err" &
        waited=$!
        sleep 1
        stop
        wait $waited
        read -r status milliseconds _ < "$work/measured"
        verdict "$(given) after $milliseconds ms" eval '[ "$status" -eq 134 ] &&
            grep -q CorruptionDetectedException "$err" && [ "$(grep -c "^bucket.*none$" "$out")" -eq 1 ]'
    done
}

# corrupt MILLISECONDS: whether the last run ended for corruption in this time of the processor.
corrupt() {
    [ "$status" -eq 134 ] && [ "$processor" -le "$1" ] && grep -q CorruptionDetectedException "$err"
}

memory_of_chains_met_again_and_again() {
    attack '20,000 buckets that lead to one chain of 20,000 slots, scan' 'corruption in 2 s'
    hostile_table chain "$root/t" 20000
    run_into /dev/null "$quask" t
    verdict "status $status after $processor ms, $mebibytes MiB, $(tail -n 1 "$err")" corrupt 2000
    attack '2^28 buckets in a hole lead to one value of 64 KiB, scan' 'corruption in 20 s'
    hostile_table zeros "$root/t" $((1 << 28)) 65536
    run_into /dev/null "$quask" t
    verdict "status $status after $processor ms, $mebibytes MiB" corrupt 20000
}

# The figures include the mapped file.
memory_of_large_values() {
    local shape job most
    for shape in large flags; do
        hostile_table $shape "$root/t" $((64 << 20))
        for job in scan -p -x; do
            words_for $job t
            most=192
            [ $job != -x ] || most=128
            attack "a value of 64 MiB (${shape/large/bytes}), ${words[*]}" \
                "status 0, $most MiB at most"
            run_into /dev/null "$quask" "${words[@]}"
            verdict "status $status, $mebibytes MiB, $milliseconds ms" \
                [ "$status" -eq 0 -a "$mebibytes" -le $((most + 4)) ]
        done
    done
}

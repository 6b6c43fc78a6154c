# Tables that are replaced while their files are being attached: what is shown must be of one table.
# Only one ever has its files in the directory, so a mixture of two was there at no moment.

whole_or_refused() {
    grep -q ' 0 mixed, 0 broken' <<< "$1" && ! grep -q '^0 whole' <<< "$1"
}

replacement_at_every_call() {
    local way job gave
    reset() {
        rm -rf "$root/t"
        hostile_table making "$root/t" 1
    }
    for way in files directory; do
        for job in scan -x -w -a; do
            words_for $job t
            attack "the table replaced before each of the last calls, by $way, ${words[*]}" \
                'the one or the other'
            at_calls 50 "replace_table $way $root/t $work/stage 2" "${words[@]}"
            gave=$(judge "$runs")
            verdict "$gave" whole_or_refused "$gave"
        done
    done
}

replacement_in_a_loop() {
    local way job gave
    for way in files directory; do
        hostile_table making "$root/t" 1
        start replace_table $way "$root/t" "$work/stage"
        for job in scan -x -w; do
            words_for $job t
            attack "the table replaced in a loop, by $way, 500 runs of ${words[*]}" \
                'the one or the other, or a refusal'
            many_times 500 "${words[@]}"
            gave=$(judge "$runs")
            verdict "$gave" whole_or_refused "$gave"
        done
        stop
    done
}

# The bucket file is another one every ten calls, so that attaching never ends with the
# files that it began with.
replacement_without_end() {
    local job
    for job in scan -x; do
        words_for $job t
        hostile_table making "$root/t" 1
        cp "$root/t/buckets" "$work/buckets"
        attack "buckets replaced before every tenth call, ${words[*]} with DOVAN_DEBUG=1" \
            'the described error, status 1, the reason at level 1'
        under=(env DOVAN_DEBUG=1 at_call every10
            "exec cp --remove-destination $work/buckets $root/t/buckets")
        run "${words[@]}"
        under=()
        verdict "$(given), $milliseconds ms; $(grep -c ' 1: ' "$err") messages of level 1" \
            eval '[ "$status" -eq 1 ] && [ ! -s "$out" ] && grep -q " 1: " "$err" &&
                [ "$(tail -n 1 "$err")" = "$(attach_error $job t)" ]'
    done
}

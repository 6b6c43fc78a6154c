# Names that are links, or become links to something else between two looks. What only root may read
# is table 7, in a directory closed to others; the stranger's own is table 1.

private_table() {
    private=$work/private
    hostile_table making "$private" 7
    chmod 700 "$private"
}

# Puts a link to root's file into the place of each of these files of the stranger's table in turn,
# and runs; how many runs have shown something of it is in $shown.
link_files() {
    local words=$1 file
    shift
    shown=0 tables=$#
    for file in "$@"; do
        hostile_table making "$root/t" 1
        ln -sf "$private/$file" "$root/t/$file"
        run $words
        ! grep -qE '0*7000000 |Orvik: 7 |1000007|buckets:23|slots: 23' "$out" || shown=$((shown + 1))
    done
}

links_as_table_files() {
    private_table
    attack 'each file a link to one that only root may read, -x' \
        'nothing of it'
    link_files '-x t' buckets slots vandral.1 vandral.2
    verdict "$shown of $tables shown" [ "$shown" -eq 0 ]
    attack 'slots a link to such a file, -x' \
        '"Error attaching Quask reader for t", status 1'
    link_files '-x t' slots
    verdict "$(given)" ended 1 "$(attach_error -x t)"
    attack 'vandral.2 a link to such a file, -x' \
        '"Error attaching Vandral reader for t", status 1'
    link_files '-x t' vandral.2
    verdict "$(given)" ended 1 "$(attach_error vandral t)"

    attack 'buckets or slots a link to such a file, scan' 'nothing of it'
    link_files t buckets slots
    verdict "$shown of $tables shown" [ "$shown" -eq 0 ]
    attack 'slots a link to such a file, scan' '"Error attaching to Quask t", status 1'
    link_files t slots
    verdict "$(given)" ended 1 "$(attach_error scan t)"

    attack 'each file a link to one that only root may read, figures of -w' 'nothing of it'
    link_files '-w t' buckets slots vandral.1 vandral.2
    verdict "$shown of $tables shown" [ "$shown" -eq 0 ]
    attack 'each such file, -a while a client has orvik mapped' 'nothing of it'
    hostile_table making "$root/t" 1
    client "$root/t/orvik:r"
    link_files -a buckets slots vandral.1 vandral.2
    verdict "$shown of $tables shown" [ "$shown" -eq 0 ]
    stop
}

# A text by a table file's name: the header report would print any.
links_to_a_text() {
    hostile_table making "$root/t" 1
    for ((i = 0; i < 200; ++i)); do echo "root:\$6\$secret:19700:0:99999:7:::"; done > "$work/shadow"
    chmod 600 "$work/shadow"
    ln -sf "$work/shadow" "$root/t/slots"
    attack 'slots a link to a text that only root may read, -x' 'nothing of it'
    run -x t
    verdict "$(grep -c secret "$out") lines of it" ended 1 "$(attach_error -x t)"
}

# A client's path outside of the root directory loses as many characters as the root directory has,
# and what is left may lead through a link below it.
links_as_directories() {
    local outside
    private_table
    outside=$area/$(printf '%*s' $((${#root} - ${#area} - 1)) '' | tr ' ' x)
    mkdir -p "$outside/d"
    hostile_table making "$outside/d/t" 1
    mkdir "$work/linked"
    hostile_table making "$work/linked/t" 7
    ln -s "$work/linked" "$root/d"
    attack 'a directory below the root a link, -a with a client that leads there' \
        'no figures of the table that the link leads to'
    client "$outside/d/t/slots:r"
    run -a
    verdict "$(grep -o -m 1 ' slots:[0-9NA]*' "$out")" grep -q 'slots:NA' "$out"
    stop
    rm -rf "$outside" "$work/linked"
}

# What is left of a client's path may be no path below the root directory at all.
links_out_of_the_root_directory() {
    local start outside
    start=$area/$(printf '%*s' $((${#root} - ${#area})) '' | tr ' ' x)
    hostile_table making "$area/private" 7
    chmod 700 "$area/private"
    for outside in "$start../private" "$start$area/private"; do
        hostile_table making "$outside" 1
        attack "a client's path whose rest is \"${outside:${#root}+1}\", -a" \
            'no figures of a table outside of the root directory'
        client "$outside/slots:r"
        run -a
        verdict "$(given), $(grep -o -m 1 ' slots:[0-9NA]*' "$out")" \
            eval '[ "$status" -eq 0 ] && grep -q slots:NA "$out"'
        stop
    done
    rm -rf "$start" "$start.." "$area/private"
}

# The same where only the older way of opening files is left.
links_without_openat2() {
    local error gave
    private_table
    for error in 1 38; do
        under=(without_openat2 "$error")
        rm -rf "$root/t"
        hostile_table making "$root/t" 1
        attack "openat2 fails with error $error; scan, -x, -w, -a" 'the reports, status 0'
        : > "$runs"
        for job in scan -x -w -a; do
            words_for $job t
            run "${words[@]}"
            { cat "$out"; echo "=== $status"; } >> "$runs"
        done
        gave=$(judge "$runs")
        verdict "$gave" [ "$gave" = '4 whole, 0 refused, 0 mixed, 0 broken' ]
        attack 'the same, each file a link to one that only root may read, -x' 'nothing of it'
        link_files '-x t' buckets slots vandral.1 vandral.2
        verdict "$shown of $tables shown" [ "$shown" -eq 0 ]
        attack "the same, the table exchanged for a link to root's own before each of the last calls, -x" \
            'never that one, no crash'
        reset() {
            rm -rf "$root/t" "$work/link"
            hostile_table making "$root/t" 1
            ln -s "$private" "$work/link"
        }
        at_calls 50 "exchange_names $root/t $work/link < /dev/null > /dev/null" -x t
        gave=$(judge -v only=1 "$runs")
        verdict "$gave" grep -q ' 0 mixed, 0 broken' <<< "$gave"
    done
    under=()
    rm -rf "$root/t" "$work/link"
}

# The search for tables meets the link, too: what it lists are names that the link leads to.
links_met_by_the_search() {
    mkdir -m 700 "$work/closed"
    hostile_table making "$work/closed/secret-name" 7
    hostile_table making "$work/closed/another-name" 7
    hostile_table making "$root/a" 1
    reset() {
        rm -rf "$root/t" "$work/link"
        hostile_table making "$root/t" 1
        ln -s "$work/closed" "$work/link"
    }
    attack 'a directory exchanged for a link to a closed one before each of the calls, the list of tables' \
        'no name from there'
    at_calls 60 "exchange_names $root/t $work/link < /dev/null > /dev/null"
    verdict "named $(grep -c secret-name "$errors") times" eval '! grep -q secret-name "$errors"'
    rm -rf "$work/closed" "$root/t" "$work/link"
}

links_as_root_directory() {
    local job gave
    mv "$root" "$work/real"
    ln -s "$work/real" "$root"
    hostile_table making "$root/t" 1
    attack 'the root directory a link; scan, -x, -w, -a' 'the reports, status 0'
    : > "$runs"
    for job in scan -x -w -a; do
        words_for $job t
        run "${words[@]}"
        { cat "$out"; echo "=== $status"; } >> "$runs"
    done
    gave=$(judge "$runs")
    verdict "$gave" [ "$gave" = '4 whole, 0 refused, 0 mixed, 0 broken' ]
    rm "$root" && rm -rf "$work/real"
}

links_to_a_device_at_every_call() {
    local job opens calls
    mknod "$work/device" c 1 3
    for job in scan -x -w -a; do
        words_for $job t
        attack "slots exchanged for a link to a device before each of the last calls, ${words[*]}" \
            'the device is never opened'
        reset() {
            hostile_table making "$root/t" 1
            rm -f "$work/link" && ln -s "$work/device" "$work/link"
        }
        reset
        start count_opens "$work/device"
        at_calls 70 "exchange_names $root/t/slots $work/link < /dev/null > /dev/null" "${words[@]}"
        calls=$(grep -c '^===' "$runs")
        stop
        read -r opens _ <<< "$last"
        verdict "opened $opens times in $calls runs" [ "$opens" -eq 0 ]
    done
    rm "$work/device" "$work/link"
}

links_to_a_private_directory_at_every_call() {
    local job gave
    private_table
    for job in scan -x -w -a; do
        words_for $job t
        attack "the table exchanged for a link to root's own before each of the last calls, ${words[*]}" \
            'never that one, no crash'
        reset() {
            rm -rf "$root/t" "$work/link"
            hostile_table making "$root/t" 1
            ln -s "$private" "$work/link"
        }
        at_calls 70 "exchange_names $root/t $work/link < /dev/null > /dev/null" "${words[@]}"
        gave=$(judge -v only=1 "$runs")
        verdict "$gave" grep -q ' 0 mixed, 0 broken' <<< "$gave"
    done
    rm -rf "$root/t" "$work/link"
}

links_and_pipes_in_a_loop() {
    local opens exchanges job gave
    mknod "$work/device" c 1 3
    ln -s "$work/device" "$work/link"
    mkfifo "$work/fifo"
    hostile_table making "$root/t" 1
    start count_opens "$work/device"
    start exchange_names "$root/t/slots" "$work/link" "$work/fifo"
    attack 'slots exchanged for a link to a device and for a pipe in a loop, 2,000 runs' \
        'the device is never opened; no run hangs or crashes'
    : > "$work/all"
    for job in scan -x -w -a; do
        words_for $job t
        many_times 500 "${words[@]}"
        cat "$runs" >> "$work/all"
    done
    stop
    exchanges=$last
    stop
    read -r opens _ <<< "$last"
    gave=$(judge -v only=1 "$work/all")
    verdict "opened $opens times beside $exchanges exchanges; $gave" \
        [ "$opens:${gave##* mixed, }" = '0:0 broken' ]
    rm "$work/device" "$work/link" "$work/fifo" "$work/all"
}

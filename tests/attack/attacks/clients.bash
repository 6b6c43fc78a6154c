# What the client reports say of processes that may not be looked into, and what memory processes can
# make them take.

clients_that_may_not_be_looked_into() {
    local pid confined
    hostile_table making "$root/t" 1
    client "$root/t/slots:r"
    pid=${helpers[-1]}
    # Newer kernels let those with the other two look into processes as well.
    confined=(setpriv '--bounding-set=-sys_ptrace,-perfmon,-sys_admin')
    under=("${confined[@]}" env DOVAN_DEBUG=1)
    attack 'root without CAP_SYS_PTRACE, DOVAN_DEBUG=1, -w' \
        'one message of level 1 that processes could not be looked into'
    run -w t
    verdict "$(grep -c ' 1: ' "$err") messages: $(head -n 1 "$err")" \
        eval '[ "$status" -eq 0 ] && [ "$(grep -c "^QuaskScanner 1: .*[0-9]" "$err")" -eq 1 ]'
    under=("${confined[@]}" env DOVAN_DEBUG=5)
    attack 'the same, DOVAN_DEBUG=5' 'the error of that process in words, not "no longer exists"'
    run -w t
    verdict "$(grep "/proc/$pid/maps" "$err" | tail -n 1)" \
        eval 'grep -q "/proc/$pid/maps.*Permission denied" "$err" &&
            ! grep -q "/proc/$pid/maps no longer exists" "$err"'
    attack 'the same, -a' 'the same'
    run -a
    verdict "$(grep "/proc/$pid/maps" "$err" | tail -n 1)" \
        eval 'grep -q "/proc/$pid/maps.*Permission denied" "$err" &&
            ! grep -q "/proc/$pid/maps no longer exists" "$err"'
    under=(env DOVAN_DEBUG=1)
    attack 'all may be looked into, DOVAN_DEBUG=1, -w' 'no message'
    run -w t
    verdict "$(wc -l < "$err") messages" [ "$status" -eq 0 -a ! -s "$err" ]
    under=()
    stop
}

# many_mappings FILE: 10,000 mappings of it, by an ordinary user with a command of 100 kB.
many_mappings() {
    local arguments i
    for ((i = 0; i < 10000; ++i)); do
        arguments+=("$1:r")
    done
    client --as "$(head -c 100000 /dev/zero | tr '\0' x)" "${arguments[@]}"
}

clients_with_many_mappings() {
    local words strangers=$area/stranger-with-a-long-name
    hostile_table making "$root/t" 1
    many_mappings "$root/t/slots"
    for words in '-w t' -a; do
        attack "10,000 mappings and a command line of 100 kB, $words" 'status 0, 64 MiB at most'
        run_into /dev/null "$quask" $words
        verdict "status $status, $mebibytes MiB, $milliseconds ms" \
            [ "$status" -eq 0 -a "$mebibytes" -le 64 ]
    done
    stop
    mkdir -p "$strangers/t"
    : > "$strangers/t/slots"
    chown -R 65534 "$strangers"
    many_mappings "$strangers/t/slots"
    attack 'the same with a file of their own, -a' 'status 0, 64 MiB at most'
    run_into /dev/null "$quask" -a
    verdict "status $status, $mebibytes MiB, $milliseconds ms" \
        [ "$status" -eq 0 -a "$mebibytes" -le 64 ]
    stop
    rm -rf "$strangers"
}

clients_in_nested_directories() {
    local strangers=$area/stranger-with-a-long-name printed
    mkdir -m 777 "$strangers"
    start setpriv --reuid=65534 --regid=65534 --clear-groups nested_client "$strangers" 1000
    attack 'slots mapped in each of 1,000 nested directories with long names, -a' \
        'status 0, twice the text that is printed at most'
    printed=$(measured "$work/measured" 120 3000 "$quask" -a 2> "$err" | wc -c)
    read -r status milliseconds processor mebibytes < "$work/measured"
    mebibytes=$((mebibytes / 1024))
    verdict "status $status, $mebibytes MiB for $((printed >> 20)) MiB of text, $milliseconds ms" \
        [ "$status" -eq 0 -a "$mebibytes" -le $((2 * (printed >> 20))) ]
    stop
    rm -rf "$strangers"
}

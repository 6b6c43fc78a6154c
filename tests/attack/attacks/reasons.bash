# Why a table file could not be opened or mapped: level 5 of the table's channel, the error in words.

# reason WORDS FILE: whether the last run gave such a message.
reason() {
    grep -F "$2" "$err" | grep -qE "^Quask-t 5: .*($1)"
}

# try WHAT WORDS FILE ARGUMENT...: one attack; how the run goes is in $under and the table's files.
try() {
    local what=$1 words=$2 file=$3
    shift 3
    attack "$what, $* with DOVAN_DEBUG=5" "a message of level 5 on the table's channel: ${words//|/ or }"
    under=(env DOVAN_DEBUG=5 "${under[@]}")
    run "$@"
    under=()
    verdict "$(grep -F "$file" "$err" | grep -E "$words" | head -n 1)" reason "$words" "$file"
}

reasons_of_files_that_cannot_be_opened() {
    local file=$root/t/slots
    hostile_table making "$root/t" 1
    chmod 600 "$file"
    under=(setpriv --reuid=65534 --regid=65534 --clear-groups)
    try 'no permission for slots' 'Permission denied' "$file" t
    rm "$file"
    try 'slots missing' 'No such file or directory' "$file" t
    mkfifo "$file"
    try 'slots a pipe' 'regular' "$file" t
    rm "$file" && mknod "$file" c 1 5
    try 'slots a device' 'regular' "$file" t
    rm "$file" && mkdir "$file"
    try 'slots a directory' 'regular|Is a directory' "$file" t
    rmdir "$file" && ln -s "$root/t/orvik" "$file"
    try 'slots a link' 'link' "$file" t
    rm "$file"
}

# Depending on how many there are, no table is found, or one of its files cannot be opened.
reasons_of_too_few_descriptors() {
    local count refused=0 explained=0
    hostile_table making "$root/t" 1
    attack 'four to ten descriptors, -x t with DOVAN_DEBUG=5' \
        'for each "Error attaching" a message of level 5: Too many open files'
    for ((count = 4; count <= 10; ++count)); do
        under=(prlimit --nofile="$count" env DOVAN_DEBUG=5)
        run -x t
        ! grep -q '^Error attaching' "$err" || refused=$((refused + 1))
        ! grep -F "$root/t/" "$err" | grep -q ' 5: .*Too many open files' || explained=$((explained + 1))
    done
    under=()
    verdict "$explained of $refused explained" [ "$explained" -eq "$refused" -a "$refused" -gt 0 ]
}

reasons_of_files_that_cannot_be_mapped() {
    hostile_table making "$root/t" 1
    truncate -s 3G "$root/t/slots"
    under=(prlimit --as=1000000000)
    try 'slots larger than the address space' 'Cannot allocate memory' "$root/t/slots" t
}

# Root directories and machines that a tool must not be built for.

# configure DIRECTORY OPTION...: its messages are in $out, its status in $status.
configure() {
    local directory=$1
    shift
    cmake -S . -B "$directory" -G Ninja -DBUILD_TESTING=OFF -DQUASK_BUILD_DEMO=OFF "$@" > "$out" 2>&1
    status=$?
}

# What the configured tool would have as its root directory.
configured_root() {
    grep -o 'QUASK_ROOT_DIR=[^ ]*' "$work/build/build.ninja" | head -n 1 | tr -d '"\\'
}

configuration_of_the_root_directory() {
    local directory
    for directory in /dev/shm/quask/ /dev/shm//quask /dev/shm/./quask /dev/shm/x/../quask; do
        attack "root directory \"$directory\"" '/dev/shm/quask, or refused'
        configure "$work/build" -DQUASK_ROOT_DIR="$directory"
        verdict "status $status, $(configured_root)" \
            [ "$status" -ne 0 -o "$(configured_root)" = QUASK_ROOT_DIR=/dev/shm/quask ]
    done
    for directory in '' quask ./quask / '/dev/shm/qu*sk' '/dev/shm/qu?sk' '/dev/shm/[q]uask' \
        '/dev/shm/qu\ask' '/dev/shm/qu ask' $'/dev/shm/qu\nask'; do
        attack "root directory \"${directory//$'\n'/\\n}\"" 'refused, with a reason that names QUASK_ROOT_DIR'
        configure "$work/build" -DQUASK_ROOT_DIR="$directory"
        verdict "status $status" eval '[ "$status" -ne 0 ] && grep -q QUASK_ROOT_DIR "$out"'
    done
    rm -rf "$work/build"
}

# No such machine or library is needed: nothing is linked.
configuration_of_the_machine() {
    attack 'a 32-bit target' 'refused, with a reason'
    configure "$work/build32" -DCMAKE_TRY_COMPILE_TARGET_TYPE=STATIC_LIBRARY -DCMAKE_CXX_COMPILER=g++ \
        -DCMAKE_CXX_FLAGS=-m32
    verdict "status $status, $(grep -m 1 -E '(32|64)-bit' "$out")" \
        eval '[ "$status" -ne 0 ] && grep -qE "(32|64)-bit" "$out"'
    attack 'a big-endian target' 'refused, with a reason'
    configure "$work/build-be" -DCMAKE_TRY_COMPILE_TARGET_TYPE=STATIC_LIBRARY \
        -DCMAKE_CXX_COMPILER=clang++-14 -DCMAKE_CXX_COMPILER_TARGET=aarch64_be-linux-gnu
    verdict "status $status, $(grep -m 1 -E 'endian' "$out")" \
        eval '[ "$status" -ne 0 ] && grep -q endian "$out"'
    rm -rf "$work/build32" "$work/build-be"
}

# Sourced by inside.bash: what all attacks share. Runs in namespaces that end with it.
#
# An attack is a call of `attack WHAT MUST`, what is to be done, and `verdict GAVE CONDITION...`, which
# prints the line; the condition is a command that holds when the attack did.

programs=$PWD/build/release/tests
held=0 broken=0
export LC_ALL=C
unset DOVAN_DEBUG POSIXLY_CORRECT J5_CHROOT
ulimit -c 0

# Makes the places: $area, an empty file system of memory that holds the root directory, and there
# $work, which holds the tool and what is nobody's table.
prepare() {
    area=$(dirname "$root")
    mount -t tmpfs -o size=2g,mode=755 attack "$area" || exit 2
    work=$area/work
    out=$work/out err=$work/err runs=$work/runs errors=$work/errors
    install -D "$quask" "$work/quask"
    mkdir "$work/stage"
    quask=$work/quask
    PATH=$programs/attack:$programs/support:$PATH
}

empty_root() {
    rm -rf "$root"
    mkdir "$root"
}

attack() {
    tried=$1 must=$2
}

verdict() {
    local result=$1 word=held
    shift
    if "$@"; then
        held=$((held + 1))
    else
        word=BROKEN broken=$((broken + 1))
    fi
    printf '%-6s | %s | must give: %s | gave: %s\n' $word "$tried" "$must" "$result"
}

# run ARGUMENT...: the tool, after the words of $under, for $seconds at most. Its output is in the file
# $out, its messages are in $err; $status is its exit status, 128 more than a signal's number, or 137
# when it took too long; it took so many $milliseconds and $processor milliseconds, and at most so many
# $mebibytes, mapped files included.
under=() seconds=60
run() {
    : > "$out"
    run_into "$out" "$quask" "$@"
}

# run_into FILE COMMAND...: the same for any command and output.
run_into() {
    local output=$1 kibibytes
    shift
    measured "$work/measured" "$seconds" 3000 "${under[@]}" "$@" >> "$output" 2> "$err"
    read -r status milliseconds processor kibibytes < "$work/measured"
    mebibytes=$(((kibibytes + 1023) / 1024))
}

# What the last run gave, in one line.
given() {
    local lines
    lines=$(wc -l < "$out")
    printf 'status %d, %d lines' "$status" "$lines"
    [ ! -s "$err" ] || printf ', "%s"' "$(head -n 1 "$err" | cut -c 1-120)"
}

# ended STATUS MESSAGE: whether the last run ended so, with nothing on its output and just this on
# standard error.
ended() {
    [ "$status" -eq "$1" ] && [ ! -s "$out" ] && [ "$(cat "$err")" = "$2" ]
}

# attach_error OPTION NAME: what is said when a table's files cannot be attached.
attach_error() {
    case $1 in
        scan) echo "Error attaching to Quask $2" ;;
        -x) echo "Error attaching Quask reader for $2" ;;
        vandral) echo "Error attaching Vandral reader for $2" ;;
    esac
}

# words_for scan|-x|-w|-a TABLE: the arguments for this report, in $words.
words_for() {
    case $1 in
        scan) words=(-e "$2") ;;
        -a) words=(-a) ;;
        *) words=("$1" "$2") ;;
    esac
}

# start PROGRAM ARGUMENT...: in the background until it says "ready". Its number is $!; what it says
# is in the file $said.
inputs=() helpers=() sayings=()
start() {
    local input
    said=$work/said.${#helpers[@]}
    : > "$said"
    exec {input}> >(exec "$@" > "$said" 2>&1)
    helpers+=("$!") inputs+=("$input") sayings+=("$said")
    until grep -q ready "$said"; do
        if ! kill -0 "${helpers[-1]}" 2> /dev/null; then
            cat "$said" >&2
            exit 2
        fi
        sleep 0.01
    done
}

# Ends the program that was started last and waits for it; its last line is in $last.
stop() {
    local input=${inputs[-1]}
    exec {input}>&-
    wait "${helpers[-1]}" 2> /dev/null
    last=$(tail -n 1 "${sayings[-1]}")
    unset 'helpers[-1]' 'inputs[-1]' 'sayings[-1]'
}

# client FILE:MODE...: has an ordinary user map these files.
client() {
    start setpriv --reuid=65534 --regid=65534 --clear-groups mapping_client "$@"
}

# judge [-v only=NUMBER] FILE: the outputs in the file, each followed by "=== STATUS", of runs on the
# tables of `hostile_table making`, counted by what they show; see making.awk.
judge() {
    awk "${@:1:$#-1}" -f tests/attack/making.awk "${!#}"
}

# at_calls LAST ACTION ARGUMENT...: runs the tool once for each of the last LAST system calls that it
# makes, with ACTION done before that call, and before each run the function `reset`. The outputs are
# in the file $runs, as judge() reads them, the messages in $errors in the same way.
at_calls() {
    local last=$1 action=$2 calls call
    shift 2
    : > "$runs"
    : > "$errors"
    reset
    calls=$(at_call count "${under[@]}" "$quask" "$@")
    for ((call = calls > last ? calls - last + 1 : 1; call <= calls; ++call)); do
        reset
        run_into "$runs" at_call "$call" "$action" "$quask" "$@"
        keep_run
    done
}

# many_times TIMES ARGUMENT...: runs the tool so often, with the outputs where at_calls() leaves them.
many_times() {
    local times=$1
    shift
    : > "$runs"
    : > "$errors"
    for ((; times > 0; --times)); do
        run_into "$runs" "$quask" "$@"
        keep_run
    done
}

keep_run() {
    echo "=== $status" >> "$runs"
    [ ! -s "$err" ] || cat "$err" >> "$errors"
    echo "=== $status" >> "$errors"
}

# How many of these runs ended neither with status 0, nor with 1 and a message, nor by the exception
# that says what is corrupt.
unexplained() {
    awk '
        /^=== / {
            bad += !($2 == 0 || $2 == 1 && lines || $2 == 134 && corruption)
            lines = corruption = 0
            next
        }
        { ++lines }
        /CorruptionDetectedException/ { corruption = 1 }
        END { print bad + 0 }' "$errors"
}

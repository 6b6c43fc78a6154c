# demo_test.bash SHOW PROGRAMS: two demonstrations at the same time each show their own table, show what
# their captions say, and leave nothing. The reports on all tables are left out: whose processes they see
# is decided by scripts/demo.

show=$1 programs=$2
work=$(mktemp -d /dev/shm/quask-test.XXXXXX) || exit 1
trap 'rm -rf "$work"' EXIT
export J5_CHROOT=1

failures=0
fail()
{
    printf '%s\n' "$1"
    ((++failures))
}

mkdir "$work/1" "$work/2"
"$show" "$programs" "$work/1" > "$work/out1" 2> "$work/errors1" &
first=$!
"$show" "$programs" "$work/2" > "$work/out2" 2> "$work/errors2" || fail 'the second demonstration fails'
wait "$first" || fail 'the first demonstration fails'

for demo in 1 2; do
    other=$((3 - demo)) out=$(< "$work/out$demo")
    [[ $out == *"\"$work/$demo/tables/prices\""* ]] || fail "$demo does not show its table"
    [[ $out != *"$work/$other/"* ]] || fail "$demo shows the other table"
    [[ $out == *'-->*"'* ]] || fail "$demo shows no value that is being rewritten"
    for role in Writer:\ price_feed Shadow:\ attach_client Keyshadow:\ attach_client Reader:\ attach_client; do
        [[ $out == *$'\n'"$role"* ]] || fail "$demo shows no $role"
    done
    if [[ -x $programs/quask-stat ]]; then
        [[ $out == *$'\nprices '*' price_feed-'*' ok'$'\n'* ]] || fail "$demo shows no row of the table"
        [[ $out == *$'\nWalk\n  elements '*$'\nLength of chains, buckets\n'* ]] || fail "$demo shows no chains"
    fi
    [[ ! -s $work/errors$demo ]] || fail "$(< "$work/errors$demo")"
    [[ ! -e $work/$demo/tables ]] || fail "$demo leaves its root directory"
done
((failures == 0)) || cat "$work/out1" "$work/out2"
((failures == 0))

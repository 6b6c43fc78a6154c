# same_completion_test.bash DIRECTORY: the completions of quask-json are those of quask, for another program:
# what is tested of the one is true of the other.

cd "$1" || exit 1
failures=0
for pair in quask.bash:quask-json.bash _quask:_quask-json quask.fish:quask-json.fish; do
    if ! diff "${pair%:*}" <(sed 's/_quask_json/_quask/g; s/quask-json/quask/g' "${pair#*:}"); then
        ((++failures))
    fi
    if ! grep -q '_quask_json' "${pair#*:}" || grep -E '_quask($|[^_-]|_[^j])' "${pair#*:}"; then
        printf '%s has functions of the same name as %s\n' "${pair#*:}" "${pair%:*}"
        ((++failures))
    fi
done
((failures == 0))

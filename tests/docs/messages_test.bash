# messages_test.bash SOURCES MANUAL LEAST [EXCLUDED [PATTERN]]: the manual page describes every message that the
# sources below SOURCES, but for those in a directory EXCLUDED, print outside their reports, or end a run
# with: those in lines that match PATTERN. There are at least LEAST.

sources=$1 least=$3 excluded=${4:-none}
pattern=${5:-'(std::(cerr|cout)|message) << "|^ +<< "|piece\("|"Couldn.t open'}
manual=$(sed 's/\\&//g; s/\\-/-/g; s/\\(aq/'\''/g' "$2")

# The fixed parts of the messages, one per line. What is shorter than two words says nothing alone.
parts()
{
    grep -rhE --include='*.cpp' --exclude=header_text.cpp \
        --exclude-dir="$excluded" "$pattern" "$sources" |
        grep -oE '"[^"]+"' | sed 's/^" *//; s/ *"$//; s/\\n$//' | grep -E '^.{9,}$' | grep ' ' | sort -u
}

count=0 failures=0
while IFS= read -r part; do
    ((++count))
    if [[ $manual != *"$part"* ]]; then
        printf 'The manual page does not mention [%s]\n' "$part"
        ((++failures))
    fi
done < <(parts)
printf '%d parts of messages, %d failures\n' "$count" "$failures"
((count >= least && failures == 0))

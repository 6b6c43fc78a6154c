# messages_test.bash SOURCES MANUAL: the manual page has every message that the sources below
# SOURCES print outside their reports, or end a run with.

sources=$1
manual=$(sed 's/\\&//g; s/\\-/-/g; s/\\(aq/'\''/g' "$2")

# The fixed parts of the messages, one a line. What is shorter than two words says nothing alone.
parts()
{
    grep -rhE --include='*.cpp' --exclude=header_text.cpp \
        '(std::(cerr|cout)|message) << "|^ +<< "|piece\("|"Couldn.t open' "$sources" |
        grep -oE '"[^"]+"' | sed 's/^" *//; s/ *"$//; s/\\n$//' | grep -E '^.{9,}$' | grep ' ' | sort -u
}

count=0 failures=0
while IFS= read -r part; do
    ((++count))
    if [[ $manual != *"$part"* ]]; then
        printf 'The manual page does not tell of [%s]\n' "$part"
        ((++failures))
    fi
done < <(parts)
printf '%d parts of messages, %d failures\n' "$count" "$failures"
((count >= 25 && failures == 0))

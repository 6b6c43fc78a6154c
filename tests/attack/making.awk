# Reads the outputs of runs on the tables of making.h, each followed by a line "=== STATUS", and
# says how many of them were
#     whole    status 0, and all that is shown is of one table
#     refused  nothing of a table is shown, status 0 or 1
#     mixed    parts of two tables are shown as one
#     broken   another status, or status 1 after a part of a table
# With only=N, a whole report on any other table than number N counts as mixed.

function hex(digits,    i, value) {
    value = 0
    for (i = 1; i <= length(digits); ++i)
        value = 16 * value + index("0123456789abcdef", substr(digits, i, 1)) - 1
    return value
}

# A little-endian word of eight hexadecimal digits.
function word(digits) {
    return hex(substr(digits, 7, 2) substr(digits, 5, 2) substr(digits, 3, 2) substr(digits, 1, 2))
}

function shows(number) {
    if (!(number in shown)) {
        shown[number] = 1
        ++tables
    }
}

# A figure of a client report: of the number itself, or of the number modulo 64.
function figure(text, offset, folded) {
    sub(/.*:/, "", text)
    if (text == "NA") return
    if (!folded) shows(text - offset)
    else if (foldedFigure != "" && foldedFigure != text - offset) askew = 1
    else foldedFigure = text - offset
}

function forget(    number) {
    for (number in shown) delete shown[number]
    tables = 0; askew = 0; foldedFigure = ""
}

/^\tOrvik: / { shows($2) }
/^\tSize: / { figure($2, 16, 1) }
/^bucket\[/ {
    bucket = $1
    gsub(/bucket\[|\]/, "", bucket)
    sub(/.*-->/, "", $2)
    shows(word($2))
    if (word($3) != hex(bucket)) askew = 1
}
/^Capacity: / {
    figure($2, 1000000, 0)
    figure($3, 16, 1)
    figure($4, 1000000, 0)
    figure($5, 1000000, 0)
}
/^Occupied slots: / { figure($3, 16, 1) }
/^=== / {
    if (tables == 1 && foldedFigure != "")
        for (number in shown) if (number % 64 != foldedFigure) askew = 1
    if (tables == 1 && only != "") for (number in shown) if (number != only) askew = 1
    if (tables > 1 || askew) ++mixed
    else if ($2 != 0 && (tables == 1 || $2 != 1)) ++broken
    else if (tables == 1) ++whole
    else ++refused
    forget()
}
END {
    printf "%d whole, %d refused, %d mixed, %d broken\n", whole, refused, mixed, broken
}

#!/bin/bash
# Fails unless the page of the binary interface lists every slot in the headers' order, every error code and every
# format.
# Usage: tests/docs/check_interface_page.sh SOURCE_FOLDER
set -euo pipefail
cd "$1"
page=docs/binary-interface.md
headers=(avbase/*.h TarvoBased/I*.h)
faults=0
fault() {
    echo "$page: $*" >&2
    faults=1
}

# "IAVProc GetInterface", one line a slot
slots=$(sed -nE 's/^class (I[A-Za-z]+)( :.*)? \{$/class \1/p; s/^ *virtual( [^(]*)?[ *](~?[A-Za-z]+)\(.*/slot \2/p' "${headers[@]}" |
    awk '$1 == "class" { name = $2 } $1 == "slot" { print name, ($2 ~ /~/ ? "destructor" : $2) }')
for interface in $(cut -d' ' -f1 <<<"$slots" | uniq); do
    expected=$(sed -n "s/^$interface //p" <<<"$slots" | paste -sd, | sed 's/,/, /g')
    listed=$(sed -nE "s/^\| \`$interface\` \| (those of \`IAVProc\`, then )?(.*) \|$/\2/p" "$page")
    [[ $listed == "$expected" ]] || fault "$interface has $expected"
done
for code in $(grep -oE '= 10021[0-9]+' TarvoBased/error_codes.h | cut -c3-); do
    grep -q "^| $code |" "$page" || fault "error $code is missing"
done
formats=$(sed -n '/^| Code | Planes/,/^$/p' "$page" | cut -d'|' -f2)
for code in $(sed -nE 's/^    \{([0-9]+|formatRgba32), .*/\1/p' avbase/avbase_srcutils/pixel_formats.h | sed 's/formatRgba32/30/'); do
    grep -qw "$code" <<<"$formats" || fault "format $code is missing"
done
exit $faults

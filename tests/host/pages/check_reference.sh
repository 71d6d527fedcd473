#!/bin/bash
# Makes the reference page and looks for a picture of every effect and for every parameter. Usage: check_reference.sh COMMAND
set -euo pipefail
command=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
fail() {
    echo "check_reference: $*" >&2
    exit 1
}

ffmpeg -nostdin -v error -f lavfi -i testsrc2=size=800x600 -frames:v 1 photo.png
mkdir temporary
TMPDIR=$work/temporary "$command" reference photo.png -o page.html
[[ -z $(ls temporary) ]] || fail "it leaves $(ls temporary)"
effects=$("$command" list --names | grep -vc ^@)
[[ $(grep -c '^<article id=' page.html) -eq $effects ]] || fail "not each of $effects effects has its article"
# The four fades have two more moments each; two of them and the transparency keep their alpha.
[[ $(grep -c '^<img src="data:image/jpeg;base64,/9j/' page.html) -eq $((effects - 3 + 4)) ]] || fail "not each of them has a picture"
[[ $(grep -c '^<img src="data:image/webp;base64,UklGR' page.html) -eq 7 ]] || fail "alpha is not kept"
[[ $(grep -oE '(src|href)="[^#d][^"]*' page.html) == '' ]] || fail "the page needs other files"
for effect in rotate spotlight slide title menu_common; do
    "$command" info $effect | sed -n 's/^  \([A-Za-z0-9_]*\) (.*/\1/p'
done | while read -r parameter; do
    grep -q "<code>$parameter</code>" page.html || fail "the page does not list $parameter"
done
if "$command" reference photo.png -o page.html 2>refusal; then fail "it overwrites a page unasked"; fi
grep -q 'page.html exists' refusal || fail "$(cat refusal)"

#!/bin/bash
# Formats the manual pages without a warning and looks for every command, option, effect and parameter in them.
# Usage: check_man_pages.sh COMMAND
set -euo pipefail
command=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for page in man man-effects; do
    "$command" generate $page >"$work/$page"
    groff -ww -t -man -Tascii -P-cbou -rLL=120n "$work/$page" >"$work/$page.txt" 2>"$work/warnings"
    [[ ! -s $work/warnings ]] || { cat "$work/warnings"; exit 1; }
done
# Takes words from standard input.
expect_in() {
    local word count=0
    while read -r word; do
        grep -qF -e "$word" "$work/$1.txt" || { echo "$word is missing in $1"; exit 1; }
        count=$((count + 1))
    done
    [[ $count -gt $2 ]] || { echo "only $count words were looked for in $1"; exit 1; }
}
"$command" --help | sed -n 's/^  \([a-z]*\)  .*/nifikral \1/p' | expect_in man 8
for subcommand in apply menu slideshow title gallery; do
    "$command" $subcommand --help | grep -oE -e '--[a-z-]+' | sort -u
done | expect_in man 60
"$command" list --names | grep -v ^@ | expect_in man-effects 62
for effect in rotate spotlight slide menu_common; do
    "$command" info $effect | sed -n 's/^  \([A-Za-z0-9_]*\) (.*/\1/p'
done | expect_in man-effects 30

#!/bin/bash
# Checks every command of nifikral in the tables and indented lines of a page, with --dry-run where it makes something, in a
# folder with the files that the pages name.
# Usage: tests/docs/run_tables.sh BUILD_FOLDER PAGE
set -euo pipefail
build=$(realpath "$1") page=$(realpath "$2")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work LC_ALL=C.UTF-8 PATH=$build/bin:$PATH NIFIKRAL_MODULE=$build/lib/libnifikral.so
cd "$work"

ffmpeg -nostdin -v error -f lavfi -i testsrc2=size=640x360:duration=4 -f lavfi -i sine=duration=4 holiday.mp4
ffmpeg -nostdin -v error -i holiday.mp4 -frames:v 1 photo.jpg
cp holiday.mp4 film.mp4
for copy in a.jpg b.jpg c.jpg mask.png; do ffmpeg -nostdin -v error -i photo.jpg "$copy"; done
ffmpeg -nostdin -v error -i holiday.mp4 -vn song.mp3
printf '%s\n' 'a.jpg' 'c.jpg | 8 | The lake' >show.txt
for example in menu_common:holiday menu_travel:trip; do
    nifikral init -q "${example%:*}" "${example#*:}"
done

count=0
while IFS= read -r line; do
    [[ $line != *...* && $line != *plan* ]] || continue
    line=${line//\\|/|} line=${line%%|*} line=${line%%  #*}
    case $line in
        'nifikral apply '* | 'nifikral slideshow '* | 'nifikral title '* | 'nifikral menu '* | 'nifikral disc '*) line+=' -y --dry-run' ;;
        # It serves until it is interrupted.
        'nifikral studio '*) line="timeout -s INT 3 $line; [[ \$? == 124 ]]" ;;
        'nifikral init '* | 'nifikral gallery '*) line+=' -y' ;;
    esac
    if ! bash -c "$line" </dev/null >printed 2>&1; then
        cat printed >&2
        echo "$page: this command failed: $line" >&2
        exit 1
    fi
    count=$((count + 1))
done < <(grep -E '^(    nifikral|\|)' "$page" | grep -oE '^    nifikral .*|`nifikral [^`]*`' | sed -E 's/^    //; s/^`(.*)`$/\1/')
((count)) || { echo "$page has no command" >&2; exit 1; }
echo "$count commands"

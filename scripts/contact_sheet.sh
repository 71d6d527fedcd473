#!/bin/bash
# Makes one picture of all generators that the command lists: a frame of each in small, its name under it.
# Usage: scripts/contact_sheet.sh COMMAND OUTPUT_PICTURE
set -euo pipefail
command=$1 sheet=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$command" init -q menu_common "$work/pictures" </dev/null
pictures=("$work"/pictures/{lake,desert,forest,night}.png)
number=0
while read -r name; do
    case $name in
        *menu_*)
            "$command" init -q "$name" "$work/$name" </dev/null
            "$command" menu -q "$name" "$work/$name/menu.json" -o "$work/whole.png" -y --frames 110 </dev/null
            ;;
        slide) "$command" slideshow -q "${pictures[@]}" -o "$work/whole.png" -y --size 1280x720 --frames 363 </dev/null ;;
        title) "$command" title -q "A day at the lake" "${pictures[0]}" "$work/whole.png" -y </dev/null ;;
        *) continue ;;
    esac
    echo "$name"
    # The name stands under the picture in white.
    ffmpeg -nostdin -v error -y -i "$work/whole.png" -vf \
        "scale=384:216:flags=area,pad=400:256:8:8:color=0x202020,drawtext=font=Sans:text=$name:fontcolor=white:fontsize=17:x=(w-tw)/2:y=246-max_glyph_a" \
        -pix_fmt rgb24 "$work/$(printf 'cell_%02d.png' $number)"
    number=$((number + 1))
done < <("$command" list --names)
columns=5
ffmpeg -nostdin -v error -y -i "$work/cell_%02d.png" \
    -vf "tile=${columns}x$(((number + columns - 1) / columns)):color=0x202020" -frames:v 1 "$sheet"

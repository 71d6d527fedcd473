#!/bin/bash
# Makes one picture of everything that the command lists of a kind, in small with its name under it: the effects, on a
# photograph, or a frame of each generator with photographs.
# Usage: scripts/contact_sheet.sh COMMAND SHEET generators|PHOTOGRAPH [CELL_WIDTH [COLUMNS]]
set -euo pipefail
command=$1 sheet=$2 shown=$3 width=${4:-384} columns=${5:-5}
height=$((width * 9 / 16)) name_size=$((width / 24 > 11 ? width / 24 : 11)) margin=$((width / 48))
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Adds the picture $2 under the name $1.
number=0
add_cell() {
    echo "$1"
    ffmpeg -nostdin -v error -y -i "$2" -vf \
        "scale=$width:$height:flags=area:force_original_aspect_ratio=increase,crop=$width:$height,
         pad=$((width + 2 * margin)):$((height + 2 * margin + name_size * 2)):$margin:$margin:color=0x202020,
         drawtext=font=Sans:text=$1:fontcolor=white:fontsize=$name_size:x=(w-tw)/2:y=h-$margin-$name_size*2/3-max_glyph_a" \
        -pix_fmt rgb24 "$work/$(printf 'cell_%02d.png' $number)"
    number=$((number + 1))
}

if [[ $shown == generators ]]; then
    "$(dirname "$0")/photographs.sh" "$work/photographs"
    pictures=("$work"/photographs/{Dandelions,Mountains,"Two dogs",Brushes,Sunset}.jpg)
    while read -r name; do
        case $name in
            *menu_*)
                "$command" init -q "$name" "$work/$name" --pictures "${pictures[@]}" --title 'Summer 2026' </dev/null
                "$command" menu -q "$name" "$work/$name/menu.json" -o "$work/whole.png" -y --frames 130 </dev/null
                ;;
            slide) "$command" slideshow -q "${pictures[@]}" -o "$work/whole.png" -y --size 1280x720 --frames 363 </dev/null ;;
            title) "$command" title -q "A day outside" "${pictures[0]}" "$work/whole.png" -y </dev/null ;;
            *) continue ;;
        esac
        add_cell "$name" "$work/whole.png"
    done < <("$command" list --names)
else
    "$command" gallery -q "$shown" -o "$work/gallery.html"
    while read -r name; do
        # Of several moments the middle one; what is translucent goes over a chequered board.
        for picture in "$work/gallery_files/$name"{.jpg,_2.jpg,.webp,_2.webp}; do
            [[ -f $picture ]] || continue
            if [[ $picture == *.webp ]]; then
                ffmpeg -nostdin -v error -y -i "$picture" -filter_complex "
                    [0]split[shape][picture];
                    [shape]geq=lum='120+60*mod(floor(X/16)+floor(Y/16),2)':cb=128:cr=128:a=255[board];
                    [board][picture]overlay" -pix_fmt rgb24 "$work/board.png"
                picture=$work/board.png
            fi
            add_cell "$name" "$picture"
        done
    done < <("$command" list --names)
fi
ffmpeg -nostdin -v error -y -i "$work/cell_%02d.png" \
    -vf "tile=${columns}x$(((number + columns - 1) / columns)):color=0x202020" -frames:v 1 -q:v 6 "$sheet"

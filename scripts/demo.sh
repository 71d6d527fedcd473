#!/bin/bash
# Puts every effect that the command lists on the sample clip and the sample photograph, shows the photograph under all of
# them on one page, and makes a menu, a slideshow with a title over it, one picture of all generators, and a disc.
# Usage: scripts/demo.sh COMMAND OUTPUT_FOLDER
set -euo pipefail
command=$1 folder=$2
here=$(dirname "$0")
photographs=$folder/photographs

echo "making the sample clip and photographs (once)"
"$here/sample_media.sh" "$folder/input"
"$here/photographs.sh" "$photographs"
"$command" list --names | while read -r effect; do
    read -ra requests <<<"$("$command" info "$effect" | sed -n 's/^Example: nifikral apply IN OUT //p')"
    # Generators have commands of their own.
    ((${#requests[@]})) || continue
    echo "${requests[@]}"
    "$command" apply -q -y --encoder-option preset=veryfast "$folder/input/clip.mp4" "$folder/$effect.mp4" "${requests[@]}" </dev/null
    "$command" apply -q -y "$folder/input/photo.jpg" "$folder/$effect.png" "${requests[@]}" </dev/null
done
"$command" gallery -q -y "$folder/input/photo.jpg" -o "$folder/gallery.html"

echo "a menu"
"$command" init -q -y menu_memories "$folder/menu_project" --title 'Seen outside' \
    --pictures "$photographs"/{Bridge,Dragonfly,"Two dogs",Autumn,Mountains,Sunset}.jpg
"$command" menu -q -y menu_memories "$folder/menu_project/menu.json" -o "$folder/menu.mp4"
echo "a slideshow and a title over it"
"$command" slideshow -q -y "$photographs"/{Bridge,Dragonfly,"Two dogs",Autumn,Mountains}.jpg -o "$folder/slideshow.mp4" \
    --size 1280x720 --seconds 2 --audio "$folder/input/clip.mp4"
"$command" title -q -y 'Five photographs' "$folder/slideshow.mp4" "$folder/title.mp4" --seconds 4
echo "all generators on one sheet"
"$here/contact_sheet.sh" "$command" "$folder/generators.png" generators

echo "a disc, for players and for browsers"
mkdir -p "$folder/holiday/Photographs"
cp "$folder/input/clip.mp4" "$folder/holiday"
cp "$photographs"/{Bridge,Dragonfly,"Two dogs"}.jpg "$folder/holiday/Photographs"
"$command" disc -q -y "$folder/holiday" -o "$folder/holiday.iso"
"$command" disc -q -y "$folder/holiday" -o "$folder/holiday_web" --format web

echo
echo "The results are in $(realpath "$folder"): EFFECT.mp4 from input/clip.mp4, EFFECT.png from input/photo.jpg,"
echo "menu.mp4 from menu_project/menu.json, slideshow.mp4, title.mp4, and generators.png with a frame of every generator."
echo "The disc of the folder holiday: holiday.iso for a DVD, holiday_web/index.html for a browser."
echo "The photograph under every effect: $(realpath "$folder/gallery.html")"
echo "To choose effects, menus and slideshows by eye: $command studio --open $folder"

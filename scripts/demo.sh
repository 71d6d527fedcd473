#!/bin/bash
# Puts every effect that the command lists on the sample clip and the sample photograph, shows the photograph under all of
# them on one page, and makes the example menus.
# Usage: scripts/demo.sh COMMAND OUTPUT_FOLDER
set -euo pipefail
command=$1 folder=$2
here=$(dirname "$0")

echo "making the sample clip and photograph (once)"
"$here/sample_media.sh" "$folder/input"
"$command" list | while read -r effect _; do
    if [[ $effect =~ ^(sub|instruction)?menu_ ]]; then
        echo "$effect"
        "$command" init -q -y "$effect" "$folder/${effect}_project" </dev/null
        "$command" menu -q -y "$effect" "$folder/${effect}_project/menu.json" -o "$folder/$effect.mp4" </dev/null
        continue
    fi
    request=$(grep "^$effect:" "$here/demo_settings" || echo "$effect")
    echo "$request"
    "$command" apply -q -y --encoder-option preset=veryfast "$folder/input/clip.mp4" "$folder/$effect.mp4" "$request" </dev/null
    "$command" apply -q -y "$folder/input/photo.jpg" "$folder/$effect.png" "$request" </dev/null
done
"$command" gallery -q -y "$folder/input/photo.jpg" -o "$folder/gallery.html"

echo
echo "The results lie in $(realpath "$folder"): EFFECT.mp4 from input/clip.mp4, EFFECT.png from input/photo.jpg,"
echo "and MENU.mp4 from MENU_project/menu.json."
echo "The photograph under every effect: $(realpath "$folder/gallery.html")"

#!/bin/bash
# Collects photographs for examples in a folder, at most 1920 pixels wide or high: landscapes and upright ones, faces,
# bright and dark, from the packages lomiri-wallpapers-16.04 and, if it is installed, python3-skimage (the faces).
# Their names say what they show. Existing files are kept.
# Usage: scripts/photographs.sh FOLDER
set -euo pipefail
folder=$1
wallpapers=/usr/share/backgrounds
samples=/usr/lib/python3/dist-packages/skimage/data

mkdir -p "$folder"
# Makes the file $1 of the photograph $2; $3 cuts an upright or lying part out of it. A file appears when it is whole.
take() {
    local file=$folder/$1.jpg
    [[ ! -f $file ]] || return 0
    if [[ ! -f $2 ]]; then
        [[ $2 != "$wallpapers"/* ]] && return 0
        echo "photographs: $2 is missing; is the package lomiri-wallpapers-16.04 complete?" >&2
        exit 1
    fi
    ffmpeg -nostdin -v error -y -i "$2" -q:v 2 \
        -vf "${3:-null},scale='min(1920,iw)':'min(1920,ih)':force_original_aspect_ratio=decrease:flags=area" \
        "$file.part.jpg"
    mv "$file.part.jpg" "$file"
}

take Mountains "$wallpapers"/picosdeeuropa_by_Aitzol_Berasategi.jpg
take Astronaut "$samples"/astronaut.png
take "Two dogs" "$wallpapers"/friends_by_Aitzol_Berasategi.jpg
take Dandelions "$wallpapers"/seeding_by_Clements_Engelhardt.jpg
take Sunset "$wallpapers"/sunset_by_Aitzol_Berasategi.jpg
take Cat "$samples"/chelsea.png
take "The drum" "$wallpapers"/Wine_by_Jakkub_Mede.jpg
take Brushes "$wallpapers"/Picture_1A_by_freespace.jpg
take Stream "$wallpapers"/life_by_Aitzol_Berasategi.jpg
take Bridge "$wallpapers"/Bridge_by_Sander_Klootwijk.jpg
take Coffee "$samples"/coffee.png
take Autumn "$wallpapers"/aitzgorri_by_Aitzol_Berasategi.jpg
take "Bird in the lamplight" "$wallpapers"/free_by_Peter_Nerlich.jpg
take Rocket "$samples"/rocket.jpg
take Fig "$wallpapers"/Picture_0B_by_freespace.jpg
take Clock "$wallpapers"/greentock_by_Peter_Nerlich.jpg
take Dragonfly "$wallpapers"/Dragonfly_by_Bolly.jpg
# Upright parts.
take Waterfall "$wallpapers"/life_by_Aitzol_Berasategi.jpg 'crop=ih*2/3:ih:iw*0.33:0'
take Peak "$wallpapers"/picosdeeuropa_by_Aitzol_Berasategi.jpg 'crop=ih*3/4:ih:iw*0.36:0'
take Dandelion "$wallpapers"/seeding_by_Clements_Engelhardt.jpg 'crop=ih*3/4:ih:iw*0.1:0'

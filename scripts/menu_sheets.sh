#!/bin/bash
# Shows menu templates with what people put into them: a sheet for each template, a row for each number and shape of
# pictures, for a film, for other shapes and sizes of the menu, and in it four moments of the loop.
# Usage: scripts/menu_sheets.sh COMMAND FOLDER [TEMPLATE...]   all templates that the command lists, unless named
set -euo pipefail
command=$1 folder=$2
here=$(dirname "$0")
shift 2
[[ $# -gt 0 ]] || mapfile -t templates < <("$command" list --names | grep menu_)
[[ $# -eq 0 ]] || templates=("$@")
rate=25 seconds=24 cell=384x216

"$here/sample_media.sh" "$folder/input"
"$here/photographs.sh" "$folder/photographs"
folder=$(realpath "$folder")
film=$folder/input/clip.mp4
shots=("$folder"/photographs/{Mountains,Astronaut,"Two dogs",Dandelions,Sunset,Cat,"The drum",Brushes,Stream,Bridge,Coffee,Autumn,"Bird in the lamplight",Rocket,Fig,Clock,Dragonfly}.jpg)
upright=("$folder"/photographs/{Astronaut,"Two dogs","The drum",Waterfall,Peak,Dandelion}.jpg)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# A JSON list of texts; those with a suffix lose it and their folder with $1 set to names.
list() {
    local form=$1 entries=()
    shift
    for text; do
        [[ $form == paths ]] || text=$(basename "${text%.*}")
        entries+=("\"$text\"")
    done
    (IFS=,; echo "[${entries[*]}]")
}

# Adds the row $1 of the template $2 at the size $3 with the files after it.
row() {
    local label=$1 template=$2 width=${3%x*} height=${3#*x} texts moment shown=0
    shift 3
    case $template in
        instructionmenu_*) texts='{"text": "How to watch"}, {"text": "Arrows choose a chapter,"}, {"text": "Enter plays it,"}, {"text": "Menu leads back here."}' ;;
        *) texts='{"text": "Summer 2026"}, {"text": "Four places, and the way between them"}' ;;
    esac
    if [[ $template == menu_common ]]; then
        "$command" init -q -y menu_common "$work/menu" --pictures "$@" --title "Summer 2026" </dev/null
        mv "$work/menu/menu.json" "$work/menu/whole.json"
        sed 's/"duration": [0-9]*/"duration": '$seconds/ "$work/menu/whole.json" >"$work/menu/menu.json"
    else
        mkdir -p "$work/menu"
        printf '{"frameRate": %d, "duration": %d, "width": %d, "height": %d, "additionSourcePaths": %s, "captions": %s, "textInfos": [%s]%s}' \
            $rate $seconds "$width" "$height" "$(list paths "$@")" "$(list names "$@")" "$texts" "${extra:-}" \
            >"$work/menu/menu.json"
    fi
    for moment in 4 33 58 81; do
        "$command" menu -q -y "$template" "$work/menu/menu.json" -o "$work/whole.bmp" --page 1 \
            --frames $((rate * seconds * moment / 100)) </dev/null
        ffmpeg -nostdin -v error -y -i "$work/whole.bmp" -vf \
            "scale=${cell/x/:}:flags=area:force_original_aspect_ratio=decrease,pad=${cell/x/:}:(ow-iw)/2:(oh-ih)/2,
             drawtext=font=Sans:text='$label':fontcolor=white:fontsize=12:x=4:y=4:box=1:boxcolor=black@0.6:enable=$((!shown))" \
            -pix_fmt bgr24 "$work/$(printf 'cell_%02d.bmp' $number)"
        number=$((number + 1)) shown=1
    done
}

for template in "${templates[@]}"; do
    rm -f "$work"/cell_*
    number=0
    row 1 "$template" 640x360 "${shots[@]:1:1}"
    row 2 "$template" 640x360 "${shots[@]:0:2}"
    row 5 "$template" 640x360 "${shots[@]:0:5}"
    row 9 "$template" 640x360 "${shots[@]:0:9}"
    row 24 "$template" 640x360 "${shots[@]}" "${upright[@]:3}" "${shots[@]:0:4}"
    row upright "$template" 640x360 "${upright[@]}"
    row film "$template" 640x360 "$film" "${shots[@]:1:3}"
    row 768x576 "$template" 768x576 "${shots[@]:1:5}"
    row 3840x2160 "$template" 3840x2160 "${shots[@]:1:5}"
    ffmpeg -nostdin -v error -y -i "$work/cell_%02d.bmp" -vf tile=4x$((number / 4)):margin=2:padding=2 -frames:v 1 \
        -q:v 3 "$folder/$template.jpg"
    echo "$folder/$template.jpg"
done

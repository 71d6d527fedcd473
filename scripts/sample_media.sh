#!/bin/bash
# Makes the sample photograph and the sample clip (1280x720, 4 seconds, moving, with sound) from the photographs of
# the package lomiri-wallpapers-16.04. Existing files are kept.
# Usage: scripts/sample_media.sh FOLDER
set -euo pipefail
folder=$1
photographs=/usr/share/backgrounds
mountains=$photographs/picosdeeuropa_by_Aitzol_Berasategi.jpg
dandelions=$photographs/seeding_by_Clements_Engelhardt.jpg
brushes=$photographs/Picture_1A_by_freespace.jpg

mkdir -p "$folder"
for photograph in "$mountains" "$dandelions" "$brushes"; do
    if [[ ! -f $photograph ]]; then
        echo "sample_media: $photograph is missing; is the package lomiri-wallpapers-16.04 complete?" >&2
        exit 1
    fi
done

# A file appears under its name only when it is whole, so that the next run redoes what an interrupted one left out.
make_once() {
    local target=$1 part=$1.part.${1##*.}
    shift
    [[ -f $target ]] && return
    ffmpeg -nostdin -v error -y "$@" "$part"
    mv "$part" "$target"
}

make_once "$folder/photo.jpg" -i "$mountains" -vf scale=1280:-2:flags=area -q:v 2

# Each photograph is scaled once and repeated, then a window of the clip's size wanders over it.
window() {
    local scaled="scale=$1:-2:flags=area:out_color_matrix=bt709:out_range=tv,format=yuv420p,setsar=1"
    echo "$scaled,loop=41:1,settb=1/25,setpts=N,fps=25,crop=1280:720:x='$2':y='$3'"
}
make_once "$folder/clip.mp4" -i "$mountains" -i "$dandelions" -i "$brushes" \
    -f lavfi -i "sine=261.63:duration=4" -f lavfi -i "sine=329.63:duration=4" -f lavfi -i "sine=392:duration=4" \
    -filter_complex "
        [0:v]$(window 1600 '(iw-ow)*t/1.68' '(ih-oh)*0.4')[a];
        [1:v]$(window 1700 '(iw-ow)*(1-t/1.68)' '(ih-oh)*t/1.68')[b];
        [2:v]$(window 1400 '(iw-ow)/2' '(ih-oh)*(1-t/1.68)')[c];
        [a][b]xfade=duration=0.52:offset=1.16[ab];
        [ab][c]xfade=duration=0.52:offset=2.32[v];
        [3:a][4:a][5:a]amix=inputs=3,tremolo=f=3:d=0.5,afade=in:d=0.3,afade=out:st=3.5:d=0.5[chord];
        [chord]aformat=channel_layouts=stereo[s]" \
    -map '[v]' -map '[s]' -c:v libx264 -pix_fmt yuv420p -preset veryfast -crf 18 \
    -colorspace bt709 -color_primaries bt709 -color_trc bt709 -c:a aac -b:a 128k

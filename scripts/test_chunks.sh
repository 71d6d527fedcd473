#!/bin/bash
# Makes a run of every effect and every generator as a whole and in chunks, by GNU parallel, and compares: pictures byte
# by byte, times, and the sound's packets. In one of the runs a chunk is killed half-way and the plan started again.
# Usage: scripts/test_chunks.sh COMMAND [CHUNKS]
set -euo pipefail
command=$(realpath "$1") chunks=${2:-3}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
command -v parallel >/dev/null || { echo "test_chunks: GNU parallel is missing (apt-get install parallel)" >&2; exit 1; }

# What a viewer gets: every picture with its time, and the sound as it is stored.
contents() {
    ffmpeg -nostdin -v error -i "$1" -map 0:v -fps_mode passthrough -f framemd5 -
    ffmpeg -nostdin -v error -i "$1" -map 0:a -c copy -f framemd5 -
}

failed=0 runs=0
# A run's words with OUT for its output. The plan's last line joins, the others may run anywhere at any time.
compare() {
    local whole=("${@//OUT/whole.mkv}") shared=("${@//OUT/shared.mkv}")
    rm -rf whole.mkv shared.mkv shared.mkv.chunks
    "$command" "${whole[@]}" --encoder ffv1 -q
    "$command" plan --chunks "$chunks" "${shared[@]}" --encoder ffv1 -q >plan
    [[ -z ${interrupt:-} ]] || kill_a_chunk
    head -n -1 plan | parallel --halt now,fail=1
    tail -n 1 plan | sh
    runs=$((runs + 1))
    if ! diff <(contents whole.mkv) <(contents shared.mkv) >/dev/null; then
        echo "differs: $*"
        failed=$((failed + 1))
    fi
}

# Ends the second chunk as soon as it has begun to write.
kill_a_chunk() {
    bash -c "exec $(sed -n 2p plan)" &
    local maker=$!
    until compgen -G 'shared.mkv.chunks/*.part' >/dev/null; do sleep 0.02; done
    kill -KILL $maker
    wait $maker 2>/dev/null || true
    ! compgen -G 'shared.mkv.chunks/*.nut' || echo "the chunk was complete before it was killed"
}

ffmpeg -nostdin -v error -f lavfi -i testsrc2=s=320x180:d=2:r=25 -f lavfi -i sine=d=2 -c:v ffv1 -c:a flac clip.mkv
ffmpeg -nostdin -v error -f lavfi -i mandelbrot=s=320x180 -frames:v 1 photo.png
for name in $("$command" list | cut -d' ' -f1); do
    case $name in
        *menu_*)
            "$command" init -q "$name" "$name"
            compare menu "$name" "$name/menu.json" -o OUT --length 0.6 --audio clip.mkv
            ;;
        slide) compare slideshow photo.png "$PWD" -o OUT --size 320x180 --audio clip.mkv --length 3 ;;
        title) compare title "A title" clip.mkv OUT --begin 0.5 --seconds 1 ;;
        *) compare apply clip.mkv OUT "$name" ;;
    esac
done
compare apply clip.mkv OUT rotate:x=160:y=90:r=80:scale=0..4 fadeout
interrupt=1 compare apply clip.mkv OUT oilpainting
echo "$runs runs in $chunks chunks, $failed differ"
[[ $failed -eq 0 ]]

#!/bin/bash
# Runs the ```sh blocks of a page of the documentation in order, as one script, in a folder that holds a sample
# holiday.mp4 and photo.jpg, with the programs and plug-ins of an uninstalled build. What a ```text block shows, the
# ```sh block before it must print, errors included; a line "..." stands for any lines there.
# Usage: tests/docs/run_page.sh BUILD_FOLDER PAGE
set -euo pipefail
build=$(realpath "$1") page=$(realpath "$2")
sources=$(realpath "$(dirname "$0")/../..")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "$page: $*" >&2
    exit 1
}

# block_N.printed: what block N prints; block_N.shown: what the page says it does.
awk -v folder="$work" '
    /^```/ && inside { inside = ""; next }
    /^```sh$/ { inside = folder "/script"; print "exec >" folder "/block_" ++block ".printed 2>&1" >inside; next }
    /^```text$/ && block { inside = folder "/block_" block ".shown"; printf "" >inside; next }
    /^```/ { inside = "/dev/null"; next }
    inside { print >inside }
' "$page"
[[ -f $work/script ]] || fail 'has no ```sh block'

samples=$build/samples
mkdir -p "$samples" "$work/home" "$work/here"
(
    flock 9
    "$sources/scripts/sample_media.sh" "$samples"
    # Small and short, since pages are many.
    [[ -f $samples/small.mp4 ]] ||
        ffmpeg -nostdin -v error -y -i "$samples/clip.mp4" -t 2 -vf scale=640:-2:flags=area -c:a copy "$samples/small.part.mp4"
    [[ -f $samples/small.mp4 ]] || mv "$samples/small.part.mp4" "$samples/small.mp4"
) 9<"$samples"
cp "$samples/photo.jpg" "$work/here/photo.jpg"
cp "$samples/small.mp4" "$work/here/holiday.mp4"
cd "$work/here"

export HOME=$work/home LC_ALL=C.UTF-8
export PATH=$build/bin:$PATH NIFIKRAL_MODULE=$build/lib/libnifikral.so
export FREI0R_PATH=$build/lib/frei0r-1
export GST_PLUGIN_PATH=$build/lib/gstreamer-1.0 GST_REGISTRY=$samples/gstreamer-registry
# What is compiled against is installed, as tests/install does it.
export CMAKE_PREFIX_PATH=$build/stage PKG_CONFIG_PATH=$build/stage/lib/pkgconfig
if ! BASH_XTRACEFD=9 bash -xeuo pipefail "$work/script" 9>"$work/trace" </dev/null; then
    last=$(find "$work" -name 'block_*.printed' | sort -V | tail -n1)
    tail -n20 "$last" >&2
    fail "this command failed: $(tail -n1 "$work/trace")"
fi

for shown in "$work"/block_*.shown; do
    [[ -f $shown ]] || continue
    printed=${shown%.shown}.printed
    pattern=$(sed 's/[[:punct:]]/\\&/g; s/^\\\.\\\.\\\.$/*/' "$shown")
    # shellcheck disable=SC2053 # a pattern, with every mark but that star quoted
    [[ $(<"$printed") == $pattern ]] || { diff -u "$shown" "$printed" >&2 || true; fail "a block prints something else"; }
done

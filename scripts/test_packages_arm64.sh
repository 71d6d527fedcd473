#!/bin/bash
# Unpacks packages for 64-bit ARM and their declared dependencies into a folder, and runs there in qemu what
# scripts/test_packages.sh runs in a clean system. Effects and a menu must have the bytes of a command for this system.
# Nothing is installed: what packages do as they are installed is not tried. Needs mmdebstrap, qemu and the network.
# Usage: scripts/test_packages_arm64.sh FOLDER_WITH_PACKAGES COMMAND
set -euo pipefail
packages=$(realpath "$1") command=$(realpath "$2") mirror=${DEBIAN_MIRROR:-http://deb.debian.org/debian}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root=$work/root libraries=/usr/lib/aarch64-linux-gnu
fail() {
    echo "test_packages_arm64: $*" >&2
    exit 1
}

echo "unpacking the packages and what they depend on"
mkdir "$work/source"
cp "$packages"/*.deb "$work/source"
(cd "$work/source" && dpkg-scanpackages . >Packages 2>/dev/null)
ours=$(sed -n 's/^Package: //p' "$work/source/Packages" | paste -sd,)
mmdebstrap --quiet --variant=extract --architectures=arm64 --aptopt='APT::Sandbox::User "root"' \
    --include="$ours,ffmpeg,fonts-dejavu-core,gstreamer1.0-tools,gstreamer1.0-plugins-base" \
    --hook-dir=/usr/share/mmdebstrap/hooks/merged-usr bookworm "$root" \
    "deb $mirror bookworm main" "deb [trusted=yes] copy:$work/source ./" || fail "the dependencies cannot be met"

# Packages choose among libraries for matrices, and link the configuration of fonts, when they are installed.
ln -s ../conf.avail "$root/etc/fonts/conf.d/all" 2>/dev/null || true
arm() {
    qemu-aarch64 -L "$root" -E LD_LIBRARY_PATH=$libraries/blas:$libraries/lapack -E GST_REGISTRY_FORK=no \
        -E GST_REGISTRY="$work/registry" -E GST_PLUGIN_SYSTEM_PATH_1_0="$root$libraries/gstreamer-1.0" \
        "$root/usr/bin/$1" "${@:2}"
}

nifikral_arm() { arm nifikral "$@"; }

echo "using them"
cd "$work"
# The example's pictures are drawn by Cairo, whose gradients depend on the processor.
nifikral_arm init -q menu_common project
for nifikral in "$command" nifikral_arm; do
    mkdir made && cd made
    for effect in aged_film oilpainting relief rotate spherize tilereflect; do
        $nifikral apply -q ../project/lake.png $effect.ppm $effect
    done
    $nifikral menu -q menu_common ../project/menu.json -o menu_%d.ppm --frames 3-4
    cd ..
    mv made "made.$(basename "$nifikral")"
done
diff -r "made.$(basename "$command")" made.nifikral_arm || fail "the bytes are not those of $command"

arm ffmpeg -nostdin -v error -i project/lake.png -vf frei0r=nifikral_gray -pix_fmt bgra -f rawvideo frei0r.raw
arm gst-launch-1.0 -q videotestsrc num-buffers=1 ! video/x-raw,format=BGRA ! nifikral-gray ! filesink location=gstreamer.raw
arm python3 -c '
import numpy, nifikral
picture = numpy.arange(48, dtype=numpy.uint8).reshape(4, 4, 3)
assert (nifikral.apply(picture, "invert") == 255 - picture).all()
assert len(nifikral.menu("project/menu.json")) > 1
for name in "frei0r.raw", "gstreamer.raw":
    pixels = numpy.fromfile(name, numpy.uint8).reshape(-1, 4)
    assert len(pixels) and (pixels[:, :1] == pixels[:, :3]).all(), name + " is not grey"'
echo "the packages work in qemu, with the bytes of $command"

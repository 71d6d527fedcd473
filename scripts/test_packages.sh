#!/bin/bash
# Installs the Debian packages into a clean Debian 12 of its own, with their declared dependencies and nothing else, and
# puts effects on pictures there: with the command, in ffmpeg, in GStreamer and in Python. Needs root, debootstrap and
# the network; exits with 77 where it cannot run. Packages for 64-bit ARM go through scripts/test_packages_arm64.sh.
# Usage: scripts/test_packages.sh FOLDER_WITH_PACKAGES
set -euo pipefail
packages=$(realpath "$1")
suite=bookworm mirror=${DEBIAN_MIRROR:-http://deb.debian.org/debian}

cannot_run() {
    echo "test_packages: cannot run here: $*" >&2
    exit 77
}
[[ $EUID -eq 0 ]] || cannot_run "a clean system is made by root only"
command -v debootstrap >/dev/null || cannot_run "debootstrap is missing (apt-get install debootstrap)"
compgen -G "$packages/*.deb" >/dev/null || { echo "test_packages: no packages in $packages; make debs makes them" >&2; exit 1; }

work=$(mktemp -d)
trap 'umount -l "$work/root/proc" 2>/dev/null || true; rm -rf --one-file-system "$work"' EXIT
root=$work/root
# Downloaded packages are kept for the next run.
cache=${XDG_CACHE_HOME:-$HOME/.cache}/nifikral-packages
mkdir -p "$cache/base" "$cache/archives/partial"

echo "making a clean system"
debootstrap --variant=minbase --cache-dir="$cache/base" "$suite" "$root" "$mirror" >"$work/log" 2>&1 || {
    grep -qiE 'couldn.t (download|resolve|find)|unable to connect|failed getting|retrieving' "$work/log" &&
        cannot_run "$mirror does not respond: $(tail -n 1 "$work/log")"
    cannot_run "debootstrap fails: $(tail -n 1 "$work/log")"
}
mount -t proc proc "$root/proc" 2>/dev/null || cannot_run "nothing can be mounted"
inside() { chroot "$root" env LC_ALL=C.UTF-8 HOME=/root DEBIAN_FRONTEND=noninteractive PATH=/usr/sbin:/usr/bin:/sbin:/bin "$@"; }

echo "installing the packages"
cp -n "$cache"/archives/*.deb "$root/var/cache/apt/archives/" 2>/dev/null || true
mkdir "$root/packages"
cp "$packages"/*.deb "$root/packages/"
inside sh -c 'printf "#!/bin/sh\nexit 101\n" >/usr/sbin/policy-rc.d && chmod +x /usr/sbin/policy-rc.d'
install_inside() {
    inside sh -c 'apt-get -qq install -y --no-install-recommends "$@"' sh "$@" >>"$work/log" 2>&1 || {
        tail -n 5 "$work/log" >&2
        echo "test_packages: $* cannot be installed" >&2
        exit 1
    }
    cp -n "$root"/var/cache/apt/archives/*.deb "$cache/archives/" 2>/dev/null || true
}
install_inside $(cd "$root" && ls packages/*.deb | sed 's|^|/|')

echo "using them"
inside sh -ec '
    nifikral --version
    nifikral init -q menu_common /project
    nifikral apply -q /project/lake.png /gray.png gray
    nifikral menu -q menu_common /project/menu.json -o /menu.mp4 --frames 0-4
    test -s /menu.mp4
    test -e /usr/include/nifikral/avbase/IVideoProc.h'
# The bridges' hosts are not dependencies of the bridges.
install_inside ffmpeg gstreamer1.0-tools gstreamer1.0-plugins-base gstreamer1.0-plugins-good
inside sh -ec '
    ffmpeg -nostdin -v error -i /project/lake.png -vf frei0r=nifikral_gray /frei0r.png
    gst-launch-1.0 -q filesrc location=/project/lake.png ! pngdec ! videoconvert ! nifikral-gray ! videoconvert ! \
        pngenc ! filesink location=/gstreamer.png'
inside python3 -c '
import numpy, nifikral
picture = numpy.arange(48, dtype=numpy.uint8).reshape(4, 4, 3)
assert (nifikral.apply(picture, "invert") == 255 - picture).all()
assert len(nifikral.menu("/project/menu.json")) > 1'
# Grey is without colour; planar pictures come within a step of it.
for picture in gray frei0r gstreamer; do
    saturation=$(inside ffmpeg -nostdin -v error -i /$picture.png -vf \
        'format=yuv444p,signalstats,metadata=print:key=lavfi.signalstats.SATMAX:file=-' -f null - | sed -n 's/.*SATMAX=//p')
    awk "BEGIN { exit !($saturation <= 2) }" || { echo "test_packages: $picture.png is not grey: $saturation" >&2; exit 1; }
done
echo "the packages work in a clean system"

#!/bin/bash
# Makes a folder with the libraries that the project is built with, for 64-bit ARM: the *-dev packages of the lists build
# and test and what they need, unpacked and not installed, so that nothing of this system changes. Does nothing where the
# folder is of the same lists already. FOLDER/shlibs says which package has each of their libraries.
# Usage: scripts/arm64_sysroot.sh FOLDER
set -euo pipefail
folder=$1 lists=$(dirname "$0")/packages mirror=${DEBIAN_MIRROR:-http://deb.debian.org/debian}

wanted=$(grep -h -e '-dev$' "$lists/build" "$lists/test" | sort -u | paste -sd,)
[[ -f $folder/packages && $(<"$folder/packages") == "$wanted" ]] && exit 0
echo "making $folder"
rm -rf "$folder"
mkdir -p "$folder"
# apt's own user for downloads may not reach the folder.
mmdebstrap --quiet --variant=extract --architectures=arm64 --include="libc6-dev,$wanted" \
    --extract-hook='for deb in "$1"/var/cache/apt/archives/*.deb; do dpkg-deb -I "$deb" shlibs 2>/dev/null || true; done |
        grep -v ^udeb: >"$1/shlibs"' \
    --hook-dir=/usr/share/mmdebstrap/hooks/merged-usr --aptopt='APT::Sandbox::User "root"' bookworm "$folder" "$mirror" || {
    rm -rf "$folder"
    echo "arm64_sysroot: mmdebstrap fails; $mirror must respond, and its key be known (debian-archive-keyring)" >&2
    exit 1
}
# Links from the root would lead to this system's own libraries.
find "$folder" -type l -lname '/*' -printf '%p %l\n' | while read -r link target; do
    ln -snfr "$folder$target" "$link"
done
echo "$wanted" >"$folder/packages"

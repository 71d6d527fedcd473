#!/bin/bash
# Makes the packages once more, from a copy of the sources in a folder of another depth, and compares them byte for byte.
# usage: scripts/test_reproducible.sh FOLDER_WITH_PACKAGES
set -euo pipefail
packages=$(realpath "$1")
cd "$(dirname "$0")/.."
compgen -G "$packages/*.deb" >/dev/null || { echo "test_reproducible: no packages in $packages; make debs makes them" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
copy=$work/another/place/for/the/sources
mkdir -p "$copy"
git ls-files -z | xargs -0 cp --parents -t "$copy"
# A cache for the compiler would hand out what the first build made.
CCACHE_DISABLE=1 SOURCE_DATE_EPOCH=$(git log -1 --format=%ct) make -s -C "$copy" debs >"$work/log" 2>&1 || {
    tail -n 20 "$work/log" >&2
    exit 1
}
status=0
for package in "$packages"/*.deb; do
    name=${package##*/}
    if cmp -s "$package" "$copy/build/package/$name"; then
        echo "$name: $(sha256sum <"$package" | cut -c1-16), the same from both folders"
    else
        status=1
        for side in first second; do rm -rf "${work:?}/$side"; done
        dpkg-deb -R "$package" "$work/first"
        dpkg-deb -R "$copy/build/package/$name" "$work/second"
        echo "$name DIFFERS: $(diff -rq "$work/first" "$work/second" | sed "s,$work/,,g" | tr '\n' ';')"
    fi
done
exit $status

#!/bin/bash
# What dpkg-shlibdeps prints, for programs for 64-bit ARM: it knows the packages of this system alone. Theirs are looked up
# among those that scripts/arm64_sysroot.sh unpacked. CPack calls it.
# Usage: scripts/arm64_shlibdeps.sh [-lFOLDER_WITH_LIBRARIES_OF_OUR_OWN]... -O FILE...
set -euo pipefail
shlibs=$(dirname "$0")/../build/arm64-sysroot/shlibs
own=() files=()
for argument in "$@"; do
    case $argument in
    --version | --help) exec dpkg-shlibdeps "$argument" ;;
    -l*) own+=("${argument#-l}") ;;
    -*) ;;
    *) files+=("$argument") ;;
    esac
done

aarch64-linux-gnu-readelf -d "${files[@]}" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | sort -u | while read -r needed; do
    for folder in "${own[@]}"; do
        [[ -e $folder/$needed ]] && continue 2
    done
    # A line: the library's name, its version, and the package that has it.
    awk -v needed="$needed" '
        $1 ".so." $2 == needed || $1 "-" $2 ".so" == needed { $1 = $2 = ""; sub(/^ +/, ""); print; found = 1; exit }
        END { exit !found }' "$shlibs" || { echo "arm64_shlibdeps: no package of $needed in $shlibs" >&2; exit 1; }
done | sort -u | sed 's/$/, /' | tr -d '\n' | sed 's/^/shlibs:Depends=/; s/, $/\n/'

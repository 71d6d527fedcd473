#!/bin/bash
# Installs the Debian packages of the named lists (scripts/packages/LIST) that are missing.
# Usage: scripts/install_packages.sh LIST...
set -euo pipefail
lists=$(dirname "$0")/packages

fail() {
    echo "install_packages: $*" >&2
    exit 1
}

[[ $# -gt 0 ]] || fail "name a list: $(cd "$lists" && echo *)"
for list in "$@"; do
    [[ -f $lists/$list ]] || fail "no list '$list'; there are: $(cd "$lists" && echo *)"
done
mapfile -t wanted < <(cd "$lists" && grep -hv -e '^#' -e '^$' "$@" | sort -u)

command -v dpkg-query >/dev/null ||
    fail "this is no Debian system; install what these Debian packages hold, then call cmake yourself: ${wanted[*]}"
# What an installed package provides is installed as well.
installed=$(dpkg-query -W -f '${db:Status-Status} ${Package}, ${Provides}\n' |
    sed -n 's/ ([^)]*)//g; s/^installed //; T; s/, */\n/g; p')
missing=()
for package in "${wanted[@]}"; do
    grep -qxF "$package" <<<"$installed" || missing+=("$package")
done
[[ ${#missing[@]} -gt 0 ]] || exit 0

as_root=()
if [[ $EUID -ne 0 ]]; then
    command -v sudo >/dev/null ||
        fail "missing packages, and neither root nor sudo to install them; as root: apt-get install ${missing[*]}"
    # Asks for the password now, if there is a terminal, and not in the middle of a quiet step.
    sudo -v || fail "missing packages, and sudo refused; as root: apt-get install ${missing[*]}"
    as_root=(sudo)
fi

log=$(mktemp)
trap 'rm -f "$log"' EXIT
apt() {
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get -qq -o DPkg::Lock::Timeout=300 "$@" </dev/null >>"$log" 2>&1
}
first_fault() { grep -m1 -E '^(E|Err|W)[: ]' "$log" || tail -n1 "$log"; }

echo "installing ${missing[*]}"
# An unreachable source does not matter as long as the packages can be installed, so the status is ignored.
apt update || true
unknown=()
for package in "${missing[@]}"; do
    policy=$(LC_ALL=C apt-cache policy "$package" 2>/dev/null)
    [[ $policy == *"Candidate: "[!\(]* ]] || unknown+=("$package")
done
if [[ ${#unknown[@]} -gt 0 ]]; then
    fault=$(first_fault)
    fail "apt knows no package ${unknown[*]} (Debian 12 has them in main)${fault:+; apt-get update said: $fault}"
fi
apt install -y --no-install-recommends "${missing[@]}" || fail "apt-get install failed: $(first_fault)"

#!/bin/bash
# Installs the public libraries that the effects are compared with, builds both benchmark programs, runs them and compares
# what they measured. Exits with 1 if a row is behind a library.
# Usage: scripts/bench_peers.sh [options of Google Benchmark]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install_packages.sh build test peers
cmake --preset release -D NIFIKRAL_BUILD_BENCH=ON -D NIFIKRAL_BENCH_PEERS=ON
cmake --build --preset release --target nifikral_bench nifikral_bench_peers
figures=$(mktemp -d)
trap 'rm -r "$figures"' EXIT
for program in nifikral_bench nifikral_bench_peers; do
    build/release/bin/$program "$@" --benchmark_out="$figures/$program" --benchmark_out_format=json
done
bench/compare.py "$figures/nifikral_bench" "$figures/nifikral_bench_peers"

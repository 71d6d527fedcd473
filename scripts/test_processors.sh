#!/bin/bash
# Runs the effects' tests and the hashes of every effect and generator as on older x86-64 processors: in qemu, which stops a
# program at an instruction that the processor does not have.
# Usage: scripts/test_processors.sh BUILD_FOLDER
set -euo pipefail
build=$1 tests=$(dirname "$0")/../tests

# With SSE4 and without AVX; without SSE4; with nothing beyond the first x86-64.
for processor in Westmere core2duo qemu64; do
    echo "== $processor"
    qemu-x86_64 -cpu $processor "$build/bin/module_hashes" "$tests/hashes/expected"
    qemu-x86_64 -cpu $processor "$build/bin/effects_tests" --gtest_brief=1
done

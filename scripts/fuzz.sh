#!/bin/bash
# Lets each fuzzer of a build look for inputs that break the code, from its seeds and from what it has found before.
# SEED=1 tries the same inputs each time, as far as the seconds reach; without it each run tries others.
# usage: [SEED=N] scripts/fuzz.sh BUILD SECONDS [TARGET]...
set -euo pipefail
build=$(realpath "$1") seconds=$2
shift 2
fuzz=$(realpath "$(dirname "$0")/../fuzz")
[[ $# -gt 0 ]] || set -- objects projects requests titles plans discs studio bridges

export ASAN_OPTIONS=allocator_may_return_null=1:quarantine_size_mb=32
TMPDIR=$(mktemp -d)
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT
status=0
for target; do
    corpus=$build/fuzz/corpus/$target found=$build/fuzz/found/$target log=$build/fuzz/$target.log
    mkdir -p "$corpus" "$found"
    inputs=("$corpus")
    if [[ -d $fuzz/seeds/$target ]]; then
        inputs+=("$fuzz/seeds/$target")
    else
        # Where any bytes mean something, long ones reach more.
        for i in {1..32}; do
            LC_ALL=C awk -v seed="$((${SEED:-RANDOM} * 32 + i))" \
                'BEGIN { srand(seed); while (n++ < 600) printf "%c", int(rand() * 256) }' >"$corpus/any$i"
        done
    fi
    # What the target itself prints is dropped.
    options=(-close_fd_mask=3 -seed="${SEED:-0}" -timeout=120 -rss_limit_mb=3000 -max_len=2048)
    # What a library for fonts keeps looks like a leak of every text, until the end.
    [[ $target == objects || $target == plans ]] || options+=(-detect_leaks=0)
    if "$build/bin/fuzz_$target" "${options[@]}" -max_total_time="$seconds" -print_final_stats=1 \
        -artifact_prefix="$found/" "${inputs[@]}" >"$log" 2>&1; then
        echo "$target: $(sed -n 's/^stat::number_of_executed_units: *//p' "$log") executions, $(sed -n 's/.*\(cov: [0-9]*\).*/\1/p' "$log" | tail -n1), no finding"
    else
        status=1
        sed -n '/ERROR\|runtime error\|^SUMMARY\|error while loading/s/^/'"$target: /p" "$log" | head -n 4
        input=$(sed -n 's/.*Test unit written to //p' "$log" | tail -n1)
        echo "$target: FAILED; to run it again: ASAN_OPTIONS=$ASAN_OPTIONS $build/bin/fuzz_$target ${input:-$corpus}"
    fi
done
exit $status

#!/usr/bin/env bash
# Feeds the fuzz targets, one after the other, and says how many inputs each took and what was found.
# Usage: tools/fuzz.sh SECONDS [TARGET...]     such as tools/fuzz.sh 1200 json
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

[ $# -ge 1 ] || { sed -n '3s/^# //p' "$0" >&2; exit 2; }
seconds=$1
shift
mkdir -p build
cmake --preset fuzz >build/configure.log 2>&1 || { cat build/configure.log >&2; exit 1; }
cmake --build --preset fuzz --target fuzz -- --quiet

targets=("$@")
if [ $# -eq 0 ]; then
    for program in build/fuzz/fuzz/fuzz_*; do
        targets+=("${program##*/fuzz_}")
    done
fi
status=0
for target in "${targets[@]}"; do
    # What was learned stays, so that the next run goes on from there.
    corpus=build/fuzz/corpus/$target finds=build/fuzz/finds/$target- log=build/fuzz/$target.log
    mkdir -p "$corpus" "${finds%/*}"
    if nice "build/fuzz/fuzz/fuzz_$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=4096 \
        -print_final_stats=1 -artifact_prefix="$finds" "$corpus" "fuzz/seeds/$target" >"$log" 2>&1; then
        outcome="nothing found"
    else
        outcome="FOUND: $(grep -m 1 -o "$finds.*" "$log" || echo "see $log")"
        status=1
    fi
    printf '%-20s %12s inputs  %s\n' "$target" "$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")" "$outcome"
    [ "$outcome" = "nothing found" ] || tail -n 40 "$log"
done
exit "$status"

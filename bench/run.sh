#!/bin/sh
# Builds the benchmarks in Release and prints each benchmark's median
# throughput and its time ratio to the memchr baseline of the same run.
# Usage: bench/run.sh [program ...]   (default: incoming_bench outgoing_bench quote_fix_bench)
# BUILD_DIR chooses the build folder (default build/bench-release).
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build/bench-release}
programs=${*:-incoming_bench outgoing_bench quote_fix_bench}
repetitions=${REPETITIONS:-5}

cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DBRINDLE_BENCH=ON -DBRINDLE_TESTS=OFF >/dev/null
cmake --build "$build" -j2 --target $programs
outputs=""
for program in $programs; do
  out="$build/$program.json"
  "$build/bench/$program" --benchmark_repetitions="$repetitions" \
    --benchmark_report_aggregates_only=true --benchmark_out="$out" \
    --benchmark_out_format=json >"$build/$program.txt"
  # Programs that race a tunnel against a direct connection print their
  # own table of ratios at the end.
  sed -n '/^scenario/,$p' "$build/$program.txt"
  outputs="$outputs $out"
done
python3 "$root/bench/ratios.py" $outputs

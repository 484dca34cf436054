#!/usr/bin/env bash
# Runs every benchmark program; each prints its `ratio <name> <value>` lines last.
set -euo pipefail
build=${1:-build/release}
export QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen}
status=0
for b in "$build"/bench/bench_*; do
  [ -x "$b" ] || continue
  echo "== $(basename "$b")"
  "$b" --benchmark_min_time=0.2 || status=1
done
exit $status

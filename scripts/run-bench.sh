#!/usr/bin/env bash
# Runs every benchmark program; each prints its `ratio <name> <value>` lines last.
# Exits 0 when every program ran and succeeded, 1 when one failed or none was found.
set -euo pipefail
build=${1:-build/release}
export QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen}
status=0
ran=0
for b in "$build"/bench/bench_*; do
  # Only the programs: the build keeps folders of generated sources (bench_*_autogen) beside them.
  [ -f "$b" ] && [ -x "$b" ] || continue
  echo "== $(basename "$b")"
  ran=$((ran + 1))
  "$b" --benchmark_min_time=0.2 || {
    code=$?
    echo "$(basename "$b") failed (exit $code)" >&2
    status=1
  }
done
if [ "$ran" -eq 0 ]; then
  echo "no benchmark programs in $build/bench: build them first (cmake --build --preset release)" >&2
  exit 1
fi
exit $status

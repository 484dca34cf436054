#!/usr/bin/env bash
# Runs each libFuzzer target for a bounded time (FUZZ_SECONDS, default 60) from its seed corpus.
set -euo pipefail
build=${1:-build/fuzz}
seconds=${FUZZ_SECONDS:-60}
here=$(cd "$(dirname "$0")/.." && pwd)
status=0
for f in "$build"/fuzz/fuzz_*; do
  [ -x "$f" ] || continue
  name=$(basename "$f")
  corpus="$build/fuzz/corpus-$name"
  mkdir -p "$corpus"
  seeds="$here/fuzz/seeds/${name#fuzz_}"
  echo "== $name for ${seconds}s"
  "$f" -max_total_time="$seconds" -max_len=4096 -print_final_stats=1 "$corpus" ${seeds:+$( [ -d "$seeds" ] && echo "$seeds")} || status=1
done
exit $status

#!/usr/bin/env bash
# Runs every test through CTest. When PostgreSQL is installed, a throwaway cluster is started on a
# loopback port for the run so that the host suite also runs against it; it is removed afterwards.
set -euo pipefail
build=${1:-build/debug}
here=$(cd "$(dirname "$0")" && pwd)

export QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen}

cleanup() { :; }
if [ -z "${ADJUSTACC_TEST_PG:-}" ] && [ -x "$here/pg-test-cluster.sh" ]; then
  if pg_env=$("$here/pg-test-cluster.sh" start); then
    export ADJUSTACC_TEST_PG="$pg_env"
    cleanup() { "$here/pg-test-cluster.sh" stop || true; }
  else
    echo "note: no throwaway PostgreSQL cluster could be started; PostgreSQL tests will be skipped" >&2
  fi
fi
trap cleanup EXIT

ctest --test-dir "$build" --output-on-failure -j "$(nproc)" --timeout 600

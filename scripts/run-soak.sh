#!/usr/bin/env bash
# The soak of adjustacc-host (make soak): several clients save and inquire on loopback for SOAK_SECONDS
# (default 60); half way the service is killed with SIGKILL and started again. Runs on the server that
# ADJUSTACC_TEST_PG names, or on a throwaway PostgreSQL cluster (scripts/pg-test-cluster.sh, on
# ADJUSTACC_PG_PORT). Its last line is `soak lost <n> partial <n> doubled <n>`; it fails when any is not 0.
set -euo pipefail
build=${1:-build/release}
seconds=${SOAK_SECONDS:-60}
here=$(cd "$(dirname "$0")" && pwd)
pg=${ADJUSTACC_TEST_PG:-}
if [ -z "$pg" ]; then
  pg=$("$here/pg-test-cluster.sh" start)
  trap '"$here/pg-test-cluster.sh" stop' EXIT
fi
"$build/bench/soak_host" --daemon "$build/src/host/daemon/adjustacc-host" --pg "$pg" --seconds "$seconds"

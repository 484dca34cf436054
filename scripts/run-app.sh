#!/usr/bin/env bash
# Starts what exists of the application on the embedded default with demo data.
set -euo pipefail
build=${1:-build/debug}
if [ -x "$build/src/desktop/adjustacc" ]; then
  exec "$build/src/desktop/adjustacc" "${@:2}"
fi
echo "The desktop application is not built yet; running the test suites instead." >&2
exec "$(dirname "$0")/run-tests.sh" "$build"

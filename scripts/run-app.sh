#!/usr/bin/env bash
# Starts the desktop application on the embedded host with demo data (the database is made in the user's data
# folder on first start). Extra arguments go to adjustacc, e.g. scripts/run-app.sh build/debug --user CLERK01.
# Without a display the application shows itself through a VNC server on 127.0.0.1 and prints how to connect.
set -euo pipefail
build=${1:-build/debug}
app="$build/src/desktop/adjustacc"
if [ ! -x "$app" ]; then
  echo "The application is not built: $app is missing. Run 'make run' (or 'make build') first." >&2
  exit 1
fi
exec "$app" "${@:2}"

#!/usr/bin/env bash
# Starts (start) or removes (stop) a throwaway PostgreSQL cluster on a loopback port for the test run.
# On start it prints the connection options for the host tests, as "host=... port=... user=... dbname=...".
# The server refuses to run as root, so as root the cluster belongs to the postgres user.
set -euo pipefail
cmd=${1:-start}
port=${ADJUSTACC_PG_PORT:-55432}
dir=${ADJUSTACC_PG_DIR:-/tmp/adjustacc-pg-$port}
bindir=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -n 1)
[ -n "$bindir" ] || { echo "PostgreSQL server binaries not found" >&2; exit 1; }

if [ "$(id -u)" -eq 0 ]; then
  owner=postgres
  as_owner() { runuser -u postgres -- "$@"; }
else
  owner=$(id -un)
  as_owner() { "$@"; }
fi

case "$cmd" in
  start)
    if [ -f "$dir/data/postmaster.pid" ]; then
      as_owner "$bindir/pg_ctl" -D "$dir/data" -m immediate stop >/dev/null 2>&1 || true
    fi
    rm -rf "$dir"
    mkdir -p "$dir"
    chown "$owner" "$dir"
    as_owner "$bindir/initdb" -D "$dir/data" -U "$owner" -A trust -E UTF8 --no-locale >"$dir/initdb.log" 2>&1
    as_owner "$bindir/pg_ctl" -D "$dir/data" -l "$dir/server.log" -w -t 60 \
      -o "-c listen_addresses=127.0.0.1 -c port=$port -c unix_socket_directories=$dir -c fsync=off" start >/dev/null
    echo "host=127.0.0.1 port=$port user=$owner dbname=postgres"
    ;;
  stop)
    if [ -d "$dir/data" ]; then
      as_owner "$bindir/pg_ctl" -D "$dir/data" -m fast stop >/dev/null 2>&1 || true
    fi
    rm -rf "$dir"
    ;;
  *)
    echo "usage: $0 start|stop" >&2; exit 2 ;;
esac

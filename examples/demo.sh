#!/usr/bin/env bash
# Runs the example driver against tables of its own: `demo.sh BUILD_DIRECTORY [--trace]`.
# The sample home is copied and given a private key, so that a demo can run beside anything.
set -euo pipefail

build=$1
shift
home=$(mktemp -d)
host=

clean_up() {
  if [ -n "$host" ]; then
    kill -TERM "$host" 2>/dev/null || true
    wait "$host" || true
  fi
  rm -rf "$home"
}
trap clean_up EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

cp -r "$(dirname "$0")/home/." "$home"
key=$((0x30000000 + ($$ & 0xffff) * 16))
sed -i "s/^ORGKEY .*/ORGKEY   $key/" "$home/cfg/vokernel.cfg"
[ -z "${VOATM_TEST_KEYS:-}" ] || echo "$key" >>"$VOATM_TEST_KEYS"
export VODIR_HOME=$home

: >"$home/served"
"$build/voatm" serve >"$home/served" &
host=$!
until grep -q ready "$home/served"; do
  kill -0 "$host" 2>/dev/null || exit 2
  sleep 0.02
done
echo '$ voatm serve'
cat "$home/served"
echo
echo '$ withdrawal' "$@"
"$build/withdrawal" "$@"

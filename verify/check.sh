#!/usr/bin/env bash
# verify/check.sh: looks at every state of the model of a release, then at each FAULT_ that the model
# names: a fault that is not found is an error too.
set -euo pipefail
model=$(dirname "$(readlink -f "$0")")/release.pml
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# errors KIND [DEFINE]: prints how many errors there are, of every state, or of every way to go on.
errors() {
  local compile=(-DSAFETY -DNOCLAIM) run=()
  [ "$1" = ways ] && compile=(-DNFAIR=4) && run=(-a -f)
  spin -a "${@:2}" "$model" >spin.log
  gcc -w -O1 "${compile[@]}" -o pan pan.c
  ./pan -m1000000 "${run[@]}" >pan.log
  if grep -qE 'max search depth too small|out of memory' pan.log; then return 2; fi
  sed -n 's/.*errors: //p' pan.log
}

states=$(errors states)
ways=$(errors ways)
[ "$states$ways" = 00 ] || { echo "the protocol fails: $states $ways" >&2; exit 1; }
faults=$(grep -oE '\b(FAULT_[A-Z_]*[A-Z]|REUSE_AT_ONCE)\b' "$model" | sort -u)
for fault in $faults; do
  states=$(errors states "-D$fault")
  ways=$(errors ways "-D$fault")
  [ "$states$ways" != 00 ] || { echo "not found: $fault" >&2; exit 1; }
done

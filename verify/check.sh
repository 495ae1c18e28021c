#!/usr/bin/env bash
# verify/check.sh: looks at every state of the model of a release, then at each FAULT_ that the model
# names: a fault that is not found is an error too.
set -euo pipefail
model=$(dirname "$(readlink -f "$0")")/release.pml
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export model

# errors KIND [DEFINE]: prints how many errors there are, of every state, or of every way to go on.
errors() {
  local compile=(-DSAFETY -DNOCLAIM) run=() place=$1${2:-}
  [ "$1" = ways ] && compile=(-DNFAIR=4) && run=(-a -f)
  mkdir "$place" && cd "$place"
  spin -a "${@:2}" "$model" >spin.log
  gcc -w -O0 "${compile[@]}" -o pan pan.c
  ./pan -m1000000 "${run[@]}" >pan.log
  if grep -qE 'max search depth too small|out of memory' pan.log; then return 2; fi
  sed -n 's/.*errors: //p' pan.log
}

# holds [DEFINE]: whether the model has no errors, and with a fault planted has some.
holds() {
  local states ways
  states=$(errors states "$@")
  ways=$(errors ways "$@")
  case "${1:-none} $states $ways" in
    "none 0 0") ;;
    none*) echo "the protocol fails: $states $ways" >&2; return 1 ;;
    *" 0 0") echo "not found: $1" >&2; return 1 ;;
  esac
}

export -f errors holds
grep -oE '\b(FAULT_[A-Z_]*[A-Z]|REUSE_AT_ONCE)\b' "$model" | sort -u | sed 's/^/-D/' | { echo; cat; } |
  xargs -P2 -d '\n' -I{} bash -euo pipefail -O inherit_errexit -c 'holds {}'

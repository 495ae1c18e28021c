#!/usr/bin/env bash
# The binary interface of both libraries: `interface.sh check DIRECTORY` compares what is built
# there, with the description of its types, to what is recorded in packaging/abi, and
# `interface.sh record DIRECTORY` renews the record.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."

# each FUNCTION: with a library's name, its file and the folder of its headers.
each() {
  "$1" libvoatmutil "$build/src/libvoatmutil.so" include
  "$1" libvoplatform "$build/platform/libvoplatform.so" platform/include
}

# Without anything that depends on where and from which lines the library was made.
record() {
  abidw --headers-dir "$3" --drop-private-types --exported-interfaces-only --no-show-locs \
    --no-corpus-path --no-comp-dir-path --no-elf-needed --no-parameter-names --type-id-style hash \
    --out-file "packaging/abi/$1.abi" "$2"
}

check() {
  abidiff --exported-interfaces-only "packaging/abi/$1.abi" "$2" >&2 && return
  echo "interface: $1 is not as recorded. If that is meant: ./dev abi, and another SOVERSION when" \
    "drivers that were built before would break" >&2
  return 1
}

build=$2
each "$1"

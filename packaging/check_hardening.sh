#!/usr/bin/env bash
# Looks in what was built for the marks of each protection: `check_hardening.sh DIRECTORY`, a tree
# of installed files. The marks are those of x86-64.
set -euo pipefail

failed=0

fail() {
  printf 'hardening: %s: %s\n' "$1" "$2" >&2
  failed=1
}

# says FILE FAULT PATTERN TEXT, lacks FILE FAULT PATTERN TEXT: the text must not, or must, match.
says() { ! grep -qE "$3" <<<"$4" || fail "$1" "$2"; }
lacks() { grep -qE "$3" <<<"$4" || fail "$1" "$2"; }

check_loading() {
  local file=$1 dynamic headers
  dynamic=$(readelf -dW "$file")
  headers=$(readelf -lW "$file")
  lacks "$file" "no RELRO" 'GNU_RELRO' "$headers"
  lacks "$file" "no immediate binding" '\(FLAGS_1\).* NOW' "$dynamic"
  lacks "$file" "no mark for the stack" 'GNU_STACK' "$headers"
  says "$file" "executable stack" 'GNU_STACK.* RWE ' "$headers"
  says "$file" "relocated code" '\(TEXTREL\)|\(FLAGS\).*TEXTREL' "$dynamic"
  says "$file" "a search path of its own" '\((RPATH|RUNPATH)\)' "$dynamic"
  [[ $headers != *'[Requesting program interpreter'* ]] ||
    lacks "$file" "not position independent" '\(FLAGS_1\).* PIE' "$dynamic"
}

# A frame of more than a page is taken page by page, each touched; so no single step is larger.
large_steps() { grep -oE 'sub +[$]0x[0-9a-f]{4,7},%rsp' | grep -v '0x1000,' || true; }

check_code() {
  local file=$1 symbols code entry
  symbols=$(nm -D --undefined-only "$file")
  lacks "$file" "no stack protector" ' __stack_chk_fail' "$symbols"
  lacks "$file" "no checked libc call" ' __[a-z]+_chk(@|$)' "$symbols"
  code=$(objdump -d --no-show-raw-insn "$file")
  [ -z "$(large_steps <<<"$code")" ] || fail "$file" "a stack frame without probes"
  lacks "$file" "no probe of a stack frame" 'or[ql] +[$]0x0,(0x[0-9a-f]+)?\(%rsp\)' "$code"
  lacks "$file" "no mark for the shadow stack" 'x86 feature:.*SHSTK' "$(readelf -nW "$file")"
  entry=$(unmarked_entry "$file" "$code")
  [ -z "$entry" ] || fail "$file" "no landing mark at $entry"
}

# The first function to be called from outside that does not begin with endbr64. _init and _fini are
# the system's.
unmarked_entry() {
  awk 'NR == FNR { if ($2 ~ /[TW]/ && $3 !~ /^_(init|fini)$/) entry["0x" $1]; next }
       / <.*>:$/ { address = "0x" $1; next }
       address && /^ / {
         if (address in entry && $2 != "endbr64") { print address; exit }
         address = ""
       }' \
    <(nm -D --defined-only "$1") - <<<"$2"
}

found=0
while read -r file; do
  readelf -h "$file" >/dev/null 2>&1 || continue
  found=$((found + 1))
  check_loading "$file"
  check_code "$file"
done < <(find "$1" -type f)
[ "$found" -ge 3 ] || fail "$1" "holds $found programs and libraries, expected 3"
exit "$failed"

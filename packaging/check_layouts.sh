#!/usr/bin/env bash
# Compares every offset, size and field that docs/tables.md states with the records as the compiler
# laid them out: `check_layouts.sh LIBRARY`, a library with the description of its types.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."

library=$1
page=docs/tables.md
records=$(sed -nE 's/^struct (\w+) .*\{.*/\1/p' include/voatmutil.h)

# "RECORD OFFSET SIZE FIELD" a row of the page, "RECORD size SIZE" for a record's own. A heading or
# a name in bold says whose rows follow; a field is the name in backticks.
documented() {
  awk -F ' *[|] *' -v records="$records" '
    BEGIN { split(records, names, "\n"); for (i in names) known[names[i]] }
    /^#|^\*\*/ {
      record = "(no record)"
      count = split($0, words, /[^A-Za-z0-9_]+/)
      for (i = count; i > 0; --i) if (words[i] in known) record = words[i]
    }
    /^\*\*/ && match($0, /[0-9]+ bytes/) { print record, "size", substr($0, RSTART, RLENGTH - 6) }
    !/^\|/ { fields = 0 }
    /^\| Offset / { fields = $4 == "Field" }
    /^\| [0-9]+ / && fields { split($4, name, "`"); print record, $2, $3, name[2] }
    /^\|/ {
      for (i = 2; i < NF; ++i) {
        split($i, name, "`")
        if (name[2] in known && $(i + 1) ~ /^[0-9]+$/) print name[2], "size", $(i + 1)
      }
    }' "$page" | sort
}

# The same of the library. A record within a record is spread out, with its name before its fields.
compiled() {
  pahole -E -C "$1" "$library" 2>/dev/null | awk '
    function flush(i) {
      for (i = 1; i <= count; ++i) print record, field[i]
      count = 0
    }
    /^struct / { record = $2 }
    /^\t+struct .*\{$/ { inner = count + 1 }
    match($0, /\/\* +[0-9]+ +[0-9]+ \*\/$/) {
      split(substr($0, RSTART + 2), place, " ")
      name = $0
      sub(/(\[[0-9]+\])*;.*/, "", name)
      sub(/.*[ \t}]/, "", name)
      if ($1 !~ /^}/) {
        field[++count] = place[1] " " place[2] " " name
      } else for (i = inner; i <= count; ++i) sub(/[^ ]+$/, name ".&", field[i])
    }
    match($0, /size: [0-9]+/) { print record, substr($0, RSTART, RLENGTH) }
    /^}/ { flush() }' | sed 's/ size:/ size/' | sort
}

undocumented() {
  local record
  for record in $records; do
    grep -qw "$record" "$page" || echo "$record: not in $page"
  done
}

stated=$(documented)
described=$(grep -v '^(no' <<<"$stated" | cut -d ' ' -f 1 | sort -u | paste -sd ,)
built=$(compiled "$described") ||
  { echo "$library: pahole finds none of $described" >&2; exit 1; }
faults=$(
  comm -23 <(echo "$stated") <(echo "$built") | sed "s|^|$page, not so in the library: |"
  comm -13 <(echo "$stated") <(echo "$built") | sed "/ size /d; s|^|library, not in $page: |"
  undocumented
)
[ -z "$faults" ] || { printf '%s\n' "$faults" >&2; exit 1; }
[ "$(wc -l <<<"$stated")" -ge 80 ] || { echo "$page: too few rows were understood" >&2; exit 1; }

#!/usr/bin/env bash
# Says whether the packages hold, byte for byte, the release that was tested, although they were
# built in another directory: `check_same_code.sh INSTALLED`, a tree of the release's installed files.
# Pack with DEB_CXXFLAGS_STRIP=-g: the build id is a sum over the debug symbols too.
set -euo pipefail

installed=$1
packages=$(readlink -f "$(dirname "$0")/../build/package")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Packing strips, and names a file for debuggers; so this strips both of that.
sum() {
  strip --strip-unneeded --remove-section=.comment --remove-section=.note \
    --remove-section=.gnu_debuglink -o "$work/stripped" "$1" &&
    sha256sum <"$work/stripped"
}

same() {
  local packed tested
  packed=$(sum "$(find "$work/packed" -type f -name "$1")")
  tested=$(sum "$(find "$installed" -type f -name "$1" -not -path '*/share/*')")
  if [ -z "$packed" ] || [ "$packed" != "$tested" ]; then
    echo "$1: other bytes in the package than in the tested release" >&2
    return 1
  fi
}

for package in "$packages"/libvoatmutil1_*.deb "$packages"/voatm-tools_*.deb; do
  dpkg-deb --extract "$package" "$work/packed"
done
rm -rf "$work/packed/usr/share"
for file in 'libvoatmutil.so.*' 'libvoplatform.so.*' voatm; do same "$file"; done

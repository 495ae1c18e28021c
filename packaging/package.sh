#!/usr/bin/env bash
# Builds the Debian packages and lets lintian judge them: `package.sh BUILT`, where the release was
# built and tested, which is what they hold. Their source is a copy of the tracked files, which makes
# the same without that. They come to build/package, with a log.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."

VOATMUTIL_BUILT=$(readlink -f "$1")
export VOATMUTIL_BUILT
version=$(sed -n 's/^project(voatmutil VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
result=build/package
tree=$result/voatmutil-$version
log=$result/build.log

die() {
  printf 'package: %s\n' "$*" >&2
  exit 1
}

copy_tree() {
  rm -rf "$result"
  mkdir -p "$tree"
  git ls-files -z | xargs -0 cp --parents -t "$tree"
  mv "$tree/packaging/debian" "$tree/debian"
}

[ "$(dpkg-parsechangelog -l packaging/debian/changelog -S Version)" = "$version" ] ||
  die "packaging/debian/changelog does not begin with version $version of CMakeLists.txt"
copy_tree
(cd "$tree" && dpkg-buildpackage --unsigned-source --unsigned-changes) >"$log" 2>&1 ||
  { tail -n 40 "$log" >&2; die "cannot build: see $log"; }
lintian --allow-root --pedantic --display-info --fail-on error,warning "$result"/*.changes
ls "$result"/*.deb

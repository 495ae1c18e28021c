#!/usr/bin/env bash
# Builds the least driver outside the tree in each way that the README names, and runs it:
# `check_consumers.sh PREFIX`, where the release is installed.
set -euo pipefail

prefix=$(readlink -f "$1")
tree=$(readlink -f "$(dirname "$0")/..")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -r "$tree/packaging/consumer" "$work/driver"
cd "$work"
own=$work/driver/platform
common=(-G Ninja -DCMAKE_BUILD_TYPE=Debug)

# quietly COMMAND...: what it says is shown when it fails.
quietly() { "$@" >log 2>&1 || { cat log >&2; return 1; }; }

# build NAME OPTION...: the driver's CMake tree with these options, in NAME.
build() {
  quietly cmake -S driver -B "$@" "${common[@]}"
  quietly cmake --build "$1"
}

# compile NAME FLAG...: the driver with the compiler alone.
compile() {
  mkdir "$1"
  quietly g++ driver/driver.cpp -o "$1/driver" "${@:2}"
}

# answers NAME TRACE: the driver must run, say what it says everywhere, and trace through the
# platform it was built with.
answers() {
  local said
  said=$(VODIR_HOME=$work/driver/home "$1/driver" 2>"$1/trace")
  if [ "$said" != "started -1, UTC 1" ] || ! grep -q "$2.*Error in opening file" "$1/trace"; then
    printf 'consumer %s: printed "%s", traced "%s"\n' "$1" "$said" "$(<"$1/trace")" >&2
    return 1
  fi
}

flags() { PKG_CONFIG_LIBDIR=$1/lib/pkgconfig pkg-config --cflags --libs voatmutil; }

with_installed_release() {
  local flags
  read -ra flags < <(flags "$prefix")
  compile pkg-config "${flags[@]}" "-Wl,-rpath,$prefix/lib"
  build find_package -DCMAKE_PREFIX_PATH="$prefix"
  build add_subdirectory -DVOATMUTIL_SOURCE="$tree"
  for way in pkg-config find_package add_subdirectory; do answers "$way" '\] 2'; done
}

# A library of the switch, installed beside ours; and none, with the symbols in the program.
with_own_platform() {
  local flags
  mkdir switch
  quietly g++ -shared -fPIC -Wl,-soname,libswitch.so "$own/platform.cpp" -o switch/libswitch.so
  quietly cmake -S "$tree" -B installed "${common[@]}" -DVOATMUTIL_PLATFORM_INCLUDE_DIR="$own" \
    -DVOATMUTIL_PLATFORM_LIBRARY="$work/switch/libswitch.so"
  quietly cmake --build installed
  quietly cmake --install installed --prefix "$work/switch"
  [ ! -e switch/include/voplatform ] || { echo "bundled headers installed" >&2; return 1; }
  read -ra flags < <(flags switch)
  compile own-library "${flags[@]}" -I"$own" -Lswitch -lswitch \
    -Wl,-rpath,"$work/switch/lib:$work/switch"
  build own-symbols -DVOATMUTIL_SOURCE="$tree" -DVOATMUTIL_PLATFORM_INCLUDE_DIR="$own" \
    -DVOATMUTIL_PLATFORM_LIBRARY= -DOWN_PLATFORM="$own/platform.cpp"
  for way in own-library own-symbols; do answers "$way" "the switch's own trace 2"; done
}

with_installed_release
with_own_platform

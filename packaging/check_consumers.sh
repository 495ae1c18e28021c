#!/usr/bin/env bash
# Builds the least driver outside the tree in each way that the README names, and runs it:
# `check_consumers.sh PREFIX [whole]`, where the release is installed. `whole` builds and runs voatm
# on a switch's own platform too, which takes longer than all the rest; else what knows the platform
# is compiled.
set -euo pipefail

prefix=$(readlink -f "$1")
whole=${2:-}
[ "$whole" = whole ] && join=ON || join=OFF
tree=$(readlink -f "$(dirname "$0")/..")
work=$(mktemp -d)
trap 'wait; rm -rf "$work"' EXIT
cp -r "$tree/packaging/consumer" "$work/driver"
cd "$work"
own=$work/driver/platform
common=(-G Ninja -DCMAKE_BUILD_TYPE=Debug)

# quietly COMMAND...: what it says is shown when it fails.
quietly() {
  local log=log.$BASHPID
  "$@" >"$log" 2>&1 || { cat "$log" >&2; return 1; }
}

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

# Where a prefix has its libraries, which differs by system; the compiler's and linker's flags there.
libraries() { dirname "$(find "$1" -name libvoatmutil.so)"; }
flags() { PKG_CONFIG_LIBDIR=$(libraries "$1")/pkgconfig pkg-config --cflags --libs voatmutil; }

# The example of a driver's tests, copied out of the tree.
with_driver_tests() {
  local flags libraries
  libraries=$(libraries "$prefix")
  cp -r "$tree/examples/driver_test" tests
  read -ra flags < <(flags "$prefix")
  read -ra flags < <(echo "${flags[@]} $(pkg-config --cflags --libs gtest_main)")
  quietly g++ tests/*_test.cpp -o by-pkg-config -DVOATM="\"$prefix/bin/voatm\"" "${flags[@]}" \
    "-Wl,-rpath,$libraries"
  quietly cmake -S tests -B by-find-package "${common[@]}" -DCMAKE_PREFIX_PATH="$prefix"
  quietly cmake --build by-find-package
  quietly env LD_LIBRARY_PATH="$libraries" ./by-pkg-config
  quietly env LD_LIBRARY_PATH="$libraries" ./by-find-package/driver_test
}

with_installed_release() {
  local flags
  read -ra flags < <(flags "$prefix")
  compile pkg-config "${flags[@]}" "-Wl,-rpath,$(libraries "$prefix")"
  build find_package -DCMAKE_PREFIX_PATH="$prefix"
  build add_subdirectory -DVOATMUTIL_SOURCE="$tree"
  for way in pkg-config find_package add_subdirectory; do answers "$way" '\] 2'; done
}

# configure NAME OPTION...: the library's tree for the switch's own headers.
configure() {
  cmake -S "$tree" -B "$1" "${common[@]}" -DVOATMUTIL_PLATFORM_INCLUDE_DIR="$own" "${@:2}"
}

# The objects of voatm whose sources include a header of the platform.
knowing_the_platform() {
  local source
  for source in $(cd "$tree" && grep -lE '"(vo(cfg|debug|datetime)util|devhost/reader_line)\.h"' \
    tools/voatm/gate.cpp tools/voatm/*/*.cpp devhost/*.cpp); do
    case $source in
      */gate.cpp) echo "tools/CMakeFiles/voatm.dir/${source#tools/}.o" ;;
      tools/*) echo "tools/CMakeFiles/voatm_rooms.dir/${source#tools/}.o" ;;
      *) echo "devhost/CMakeFiles/devhost.dir/${source#devhost/}.o" ;;
    esac
  done
}

# A library of the switch, installed beside ours; and none, with the symbols in the program.
with_own_platform() {
  local flags
  mkdir switch
  quietly g++ -shared -fPIC -Wl,-soname,libswitch.so "$own/platform.cpp" -o switch/libswitch.so
  quietly configure installed -DVOATMUTIL_PLATFORM_LIBRARY="$work/switch/libswitch.so" \
    -DVOATMUTIL_TOOLS=ON -DVOATMUTIL_JOIN_SOURCES=$join
  if [ "$whole" = whole ]; then
    quietly cmake --build installed
    quietly cmake --install installed --prefix "$work/switch"
  else
    quietly cmake --build installed --target voatmutil $(knowing_the_platform)
    quietly cmake --install installed --prefix "$work/switch" --component runtime
    quietly cmake --install installed --prefix "$work/switch" --component development
  fi
  [ ! -e switch/include/voplatform ] || { echo "bundled headers installed" >&2; return 1; }
  read -ra flags < <(flags switch)
  compile own-library "${flags[@]}" -I"$own" -Lswitch -lswitch \
    -Wl,-rpath,"$work/switch/lib:$work/switch"
  build own-symbols -DVOATMUTIL_SOURCE="$tree" -DVOATMUTIL_PLATFORM_INCLUDE_DIR="$own" \
    -DVOATMUTIL_PLATFORM_LIBRARY= -DOWN_PLATFORM="$own/platform.cpp"
  for way in own-library own-symbols; do answers "$way" "the switch's own trace 2"; done
  echo '#include "voatmutil_testing.h"' | quietly g++ -x c++ -fsyntax-only "${flags[@]}" -I"$own" -
}

# The operator's command on the switch's own platform: it explains by the switch's reader, and says
# where lines are missing.
with_own_tools() {
  local voatm=(env LD_LIBRARY_PATH="$work/switch/lib:$work/switch" switch/bin/voatm)
  "${voatm[@]}" explain flags utc --home driver/home >explained
  grep -q 'vobusiness.cfg (the switch.s reader gives no line)' explained ||
    { cat explained >&2; echo "voatm does not say that the reader gives no line" >&2; return 1; }
  refused check "gives no lines" "${voatm[@]}" check --home driver/home
}

# refused NAME TEXT COMMAND...: it must fail and say this.
refused() {
  ! "${@:3}" >"$1.log" 2>&1 && tr -s ' \n' ' ' <"$1.log" | grep -F -- "$2" >/dev/null && return
  printf 'not refused: %s, with "%s"\n' "$1" "$2" >&2
  cat "$1.log" >&2
  return 1
}

# What cannot work is refused when it is configured, or when the driver is loaded.
with_the_wrong_platform() {
  local hidden='{ local: _ZN9VoCfgUtil15cfg_group_countEPKc; };'
  mkdir no-trace
  cp "$own/vocfgutil.h" "$own/vodatetimeutil.h" no-trace
  refused headers "there is no vodebugutil.h in $work/no-trace" \
    configure headers -DVOATMUTIL_PLATFORM_INCLUDE_DIR="$work/no-trace"
  quietly g++ -shared -fPIC -Wl,--version-script=<(echo "$hidden") "$own/platform.cpp" -o libless.so
  refused library "libless.so lacks VoCfgUtil::cfg_group_count(char const*)" \
    configure library -DVOATMUTIL_PLATFORM_LIBRARY="$work/libless.so"
  refused loaded "version \`VOATMUTIL_WITH_PLATFORM_bundled' not found" \
    env LD_LIBRARY_PATH="$work/switch/lib:$work/switch" pkg-config/driver
  refused loaded "version \`VOATMUTIL_WITH_PLATFORM_own_" \
    env LD_LIBRARY_PATH="$(libraries "$prefix")" own-library/driver
}

# finds_broken PROMISE: whether the installed check of a platform finds that.
finds_broken() {
  ! PLATFORM_BREAKS=$1 ./platform_check "$own/entries" >"broken.$1" 2>&1 &&
    grep -q "^broken  $1$" "broken.$1" && return
  echo "voatm_platform_check does not find that this is broken: $1" >&2
  return 1
}

# The switch's own platform keeps every promise, and each that it is told to break is found. Most
# of that is waiting for the clock.
with_checked_platform() {
  quietly g++ -std=c++17 -I"$own" switch/share/voatmutil/voatm_platform_check.cpp \
    switch/libswitch.so -Wl,-rpath,"$work/switch" -o platform_check
  quietly ./platform_check "$own/entries"
  export -f finds_broken
  export own
  ./platform_check --list | xargs -P9 -I{} bash -c 'finds_broken {}'
}

with_driver_tests &
driver_tests=$!
with_installed_release &
installed_release=$!
with_own_platform
wait $installed_release
[ "$whole" != whole ] || with_own_tools
with_the_wrong_platform
with_checked_platform
wait $driver_tests

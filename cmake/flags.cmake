include(CheckCXXCompilerFlag)
include(CheckLinkerFlag)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

# The flags of every target of this tree, and of none outside it.
add_library(voatm_flags INTERFACE)
target_compile_options(voatm_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wformat=2 -Wundef
  -fstack-protector-strong)
target_link_options(voatm_flags INTERFACE -Wl,-z,relro,-z,now)

# Protections that not every compiler has for every machine.
set(CMAKE_REQUIRED_FLAGS -Werror)
check_cxx_compiler_flag(-fstack-clash-protection VOATMUTIL_HAS_STACK_CLASH_PROTECTION)
check_cxx_compiler_flag(-fcf-protection VOATMUTIL_HAS_CF_PROTECTION)
unset(CMAKE_REQUIRED_FLAGS)
if(VOATMUTIL_HAS_STACK_CLASH_PROTECTION)
  target_compile_options(voatm_flags INTERFACE -fstack-clash-protection)
endif()
# The mark for the shadow stack is given by hand: the linker leaves it out as soon as one of the
# system's start-up objects lacks it. No such mark for branch targets: their _init has none.
if(VOATMUTIL_HAS_CF_PROTECTION)
  target_compile_options(voatm_flags INTERFACE -fcf-protection)
  check_linker_flag(CXX -Wl,-z,shstk VOATMUTIL_HAS_SHADOW_STACK_MARK)
  if(VOATMUTIL_HAS_SHADOW_STACK_MARK)
    target_link_options(voatm_flags INTERFACE -Wl,-z,shstk)
  endif()
endif()
if(VOATMUTIL_WERROR)
  target_compile_options(voatm_flags INTERFACE -Werror)
endif()

# A target with the property OPTIMIZATION, 0 or g, takes longer to compile than to run.
set(optimization $<TARGET_PROPERTY:OPTIMIZATION>)
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT VOATMUTIL_SANITIZE)
  target_compile_options(voatm_flags INTERFACE
    $<$<STREQUAL:${optimization},g>:-Og>
    "$<IF:$<STREQUAL:${optimization},0>,-O0,-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>"
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
endif()
set(CMAKE_CXX_FLAGS_RELEASE "-O2")

if(VOATMUTIL_SANITIZE)
  # The tests' own frames are watched for what the library does to them, and for no more.
  target_compile_options(voatm_flags INTERFACE -fsanitize=address,undefined
    -fno-sanitize-recover=all -fno-omit-frame-pointer
    $<$<STREQUAL:${optimization},0>:-fno-sanitize=undefined>)
  target_link_options(voatm_flags INTERFACE -fsanitize=address,undefined)
endif()
if(VOATMUTIL_FUZZ)
  # What the fuzzer is guided by; all it can have where its speed counts.
  target_compile_options(voatm_flags INTERFACE
    $<$<STREQUAL:${optimization},>:-O1;-fsanitize=fuzzer-no-link>
    $<$<STREQUAL:${optimization},g>:-fsanitize-coverage=inline-8bit-counters,pc-table>)
endif()
if(VOATMUTIL_COVERAGE)
  target_compile_options(voatm_flags INTERFACE --coverage -fprofile-abs-path)
  target_link_options(voatm_flags INTERFACE --coverage)
endif()

# Several generations of processors decode a branch that crosses 32 bytes afresh each time, which
# costs a scan over a table up to a third of its speed, depending on where the linker puts it.
set(CMAKE_REQUIRED_FLAGS -Werror)
check_cxx_compiler_flag(-Wa,-mbranches-within-32B-boundaries VOATMUTIL_CAN_ALIGN_BRANCHES)
unset(CMAKE_REQUIRED_FLAGS)

# voatm_driver_library(TARGET): the target is a library that drivers link. It is described by debug
# symbols, for debuggers and for the checks of its interface; packing puts them aside.
#
# It carries no C++ runtime. It is compiled without exceptions and RTTI, and linked against libc
# alone, so that a stray need of libstdc++ fails the build. Only a switch's own platform may bring
# such a need, by what stands inline in its headers.
function(voatm_driver_library target)
  target_compile_options(${target} PRIVATE -g -fno-exceptions -fno-rtti)
  if(VOATMUTIL_CAN_ALIGN_BRANCHES)
    target_compile_options(${target} PRIVATE -Wa,-mbranches-within-32B-boundaries)
  endif()
  if(VOATMUTIL_PLATFORM_INCLUDE_DIR)
    target_link_options(${target} PRIVATE -Wl,--as-needed)
  elseif(NOT VOATMUTIL_SANITIZE AND NOT VOATMUTIL_COVERAGE)
    target_link_options(${target} PRIVATE -nodefaultlibs)
    target_link_libraries(${target} PRIVATE c)
  endif()
endfunction()

# What is built for one platform must not be taken for what is built for another: a driver hands the
# library its own VoDebugUtil, and the library makes readers and clocks of the size in its headers.
# So the platform has a name, and every symbol of the library carries it as its version.

# voatm_check_platform(): refuses a switch's platform that the library could not be built with, or
# that would fail only when a driver is linked.
function(voatm_check_platform)
  foreach(header vocfgutil.h vodebugutil.h vodatetimeutil.h)
    if(NOT EXISTS "${VOATMUTIL_PLATFORM_INCLUDE_DIR}/${header}")
      message(FATAL_ERROR
        "VOATMUTIL_PLATFORM_INCLUDE_DIR: there is no ${header} in ${VOATMUTIL_PLATFORM_INCLUDE_DIR}")
    endif()
  endforeach()
  # What makes every call of the library: as a program when there is something to link it with.
  if(VOATMUTIL_PLATFORM_LIBRARY STREQUAL "" OR TARGET "${VOATMUTIL_PLATFORM_LIBRARY}")
    set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
    set(library)
  else()
    set(library LINK_OPTIONS -Wl,--unresolved-symbols=ignore-in-shared-libs
                LINK_LIBRARIES ${VOATMUTIL_PLATFORM_LIBRARY})
  endif()
  unset(VOATMUTIL_PLATFORM_COMPLETE CACHE)
  try_compile(VOATMUTIL_PLATFORM_COMPLETE ${CMAKE_BINARY_DIR}/platform_check
    ${PROJECT_SOURCE_DIR}/platform/voatm_platform_check.cpp
    CMAKE_FLAGS -DINCLUDE_DIRECTORIES=${VOATMUTIL_PLATFORM_INCLUDE_DIR}
    ${library}
    OUTPUT_VARIABLE said
    CXX_STANDARD 17 CXX_STANDARD_REQUIRED ON CXX_EXTENSIONS OFF)
  if(VOATMUTIL_PLATFORM_COMPLETE)
    return()
  endif()
  string(REGEX MATCHALL "undefined (reference to|symbol:) [`']?Vo[^'\n]*" lacking "${said}")
  list(TRANSFORM lacking REPLACE "undefined (reference to|symbol:) [`']?" "")
  list(REMOVE_DUPLICATES lacking)
  if(lacking)
    list(JOIN lacking "\n  " lacking)
    message(FATAL_ERROR
      "VOATMUTIL_PLATFORM_LIBRARY: ${VOATMUTIL_PLATFORM_LIBRARY} lacks\n  ${lacking}")
  endif()
  message(FATAL_ERROR "voatmutil cannot use the platform of ${VOATMUTIL_PLATFORM_INCLUDE_DIR}: "
                      "see docs/platform.md for what it calls\n${said}")
endfunction()

# voatm_platform_name(VARIABLE): "bundled", what the switch names its own, or else a name that
# changes with the headers.
function(voatm_platform_name variable)
  set(name bundled)
  if(VOATMUTIL_PLATFORM_NAME)
    set(name ${VOATMUTIL_PLATFORM_NAME})
  elseif(VOATMUTIL_PLATFORM_INCLUDE_DIR)
    set(sums)
    foreach(header vocfgutil.h vodebugutil.h vodatetimeutil.h)
      file(SHA256 "${VOATMUTIL_PLATFORM_INCLUDE_DIR}/${header}" sum)
      string(APPEND sums ${sum})
    endforeach()
    string(SHA256 sum ${sums})
    string(SUBSTRING ${sum} 0 12 sum)
    set(name own_${sum})
  endif()
  if(NOT name MATCHES "^[A-Za-z0-9_]+$")
    message(FATAL_ERROR "VOATMUTIL_PLATFORM_NAME: ${name} is not made of letters, digits and _")
  endif()
  set(${variable} ${name} PARENT_SCOPE)
endfunction()

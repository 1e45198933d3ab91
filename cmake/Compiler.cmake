# Compiler settings for all targets of this project.
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()
find_program(SORVIK_CCACHE ccache)
if(SORVIK_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Share cached objects between checkouts of the same sources.
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
      CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${SORVIK_CCACHE})
endif()
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

add_library(sorvik_build_settings INTERFACE)
target_compile_options(sorvik_build_settings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor
    -Woverloaded-virtual -Werror
    $<$<CONFIG:Debug>:-Og>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 wrongly warns about overlapping copies in string concatenation (GCC bug 105651).
  target_compile_options(sorvik_build_settings INTERFACE -Wno-restrict)
endif()
target_compile_definitions(sorvik_build_settings INTERFACE _GLIBCXX_ASSERTIONS)
if(SORVIK_SANITIZE)
  # Instrumented code causes additional warnings, such as for fences in Boost.
  target_compile_options(sorvik_build_settings INTERFACE -Wno-error)
  target_compile_options(sorvik_build_settings INTERFACE
      -fsanitize=${SORVIK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -O1)
  target_link_options(sorvik_build_settings INTERFACE -fsanitize=${SORVIK_SANITIZE})
endif()
if(SORVIK_FUZZ)
  target_compile_options(sorvik_build_settings INTERFACE
      -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all
      -fno-omit-frame-pointer)
  target_link_options(sorvik_build_settings INTERFACE -fsanitize=address,undefined)
endif()
find_program(SORVIK_LLD ld.lld)
if(SORVIK_LLD)
  target_link_options(sorvik_build_settings INTERFACE -fuse-ld=lld)
endif()

# harden(TARGET...): makes exploits of memory errors harder. The sanitizers replace it in their builds.
# Code without optimization can't be fortified.
include(CheckPIESupported)
check_pie_supported()
function(harden)
  if(SORVIK_SANITIZE OR SORVIK_FUZZ)
    return()
  endif()
  foreach(target ${ARGN})
    target_compile_options(${target} PRIVATE
        -fstack-protector-strong $<$<CONFIG:Release>:-U_FORTIFY_SOURCE> $<$<CONFIG:Release>:-D_FORTIFY_SOURCE=2>)
    target_link_options(${target} PRIVATE -Wl,-z,relro -Wl,-z,now)
    set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  endforeach()
endfunction()

# What every target of this project shares: language, warnings, sanitizers, include root.

include_guard(GLOBAL)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

find_program(VELOTRINE_CCACHE ccache)
if(VELOTRINE_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # JUCE names the build's date in places, and precompiled headers have a date of their own.
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env CCACHE_SLOPPINESS=pch_defines,time_macros
                                  "${VELOTRINE_CCACHE}")
endif()

# Our own code: warnings are errors. A library's headers come in as SYSTEM and are not ours to judge.
add_library(velotrine_own_code INTERFACE)
target_compile_options(
  velotrine_own_code
  INTERFACE -Wall
            -Wextra
            -Werror
            -Wpedantic
            -Wconversion
            -Wsign-conversion
            -Wdouble-promotion
            -Wshadow
            -Wold-style-cast
            -Wnon-virtual-dtor
            -Woverloaded-virtual
            -Wcast-align
            -Wformat=2
            # Where a processor could fuse a multiply and an add, the last bit would change from one machine to the
            # next, and with it, sooner or later, a note.
            -ffp-contract=off)

if(CMAKE_CXX_COMPILER_ID MATCHES "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 20)
  # The first is what the render thread calls, as far as the compiler can follow it. The second would be about the
  # standard library of Debian 12, whose stable sort uses what has gone out of fashion since.
  target_compile_options(velotrine_own_code INTERFACE -Wfunction-effects -Wno-deprecated-declarations)
endif()

if(VELOTRINE_SANITIZE)
  # JUCE's modules stay as they are, so that a compiler cache has them from other presets; but the thread sanitizer has to
  # see every atomic by which threads keep apart. The C library's checked forms (cmake/Hardening.cmake) would hide from a
  # sanitizer what it looks for; without SHELL, the option that takes them back would be a repetition to CMake, and left
  # out.
  target_compile_options(
    velotrine_own_code INTERFACE -fsanitize=${VELOTRINE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -O1
                                 -g1 "SHELL:-U_FORTIFY_SOURCE")
  if(VELOTRINE_SANITIZE STREQUAL "thread")
    add_compile_options(-fsanitize=thread -fno-omit-frame-pointer -g1)
  endif()
  add_link_options(-fsanitize=${VELOTRINE_SANITIZE})
endif()

# velotrine_library(NAME SOURCES...): a library whose headers are included from the repository's root.
function(velotrine_library name)
  add_library(${name} STATIC ${ARGN})
  target_include_directories(${name} PUBLIC "${PROJECT_SOURCE_DIR}")
  target_compile_features(${name} PUBLIC cxx_std_20)
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:velotrine_own_code>)
endfunction()

# Compiler, linker and switches that hold for every target.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

option(ORVO_TESTS "Build the tests" ON)
option(ORVO_BENCH "Build the benchmarks" OFF)
option(ORVO_FUZZ "Build the fuzz targets (needs clang)" OFF)
option(ORVO_WERROR "Treat warnings as errors" ON)
set(ORVO_SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize= takes them; empty for none")

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast
                    -Woverloaded-virtual)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 sees overlaps in std::string's own code where there are none (its bug 105651).
  add_compile_options(-Wno-restrict)
endif()
if(ORVO_WERROR)
  add_compile_options(-Werror)
endif()

if(ORVO_SANITIZE)
  add_compile_options(-fsanitize=${ORVO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${ORVO_SANITIZE})
endif()

find_program(ORVO_CCACHE ccache)
if(ORVO_CCACHE)
  # A fresh clone beside an older one finds what that one has compiled, precompiled headers included.
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env
    "CCACHE_BASEDIR=${CMAKE_SOURCE_DIR}" CCACHE_NOHASHDIR=1
    CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime "${ORVO_CCACHE}")
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-fpch-preprocess)
  endif()
endif()
find_program(ORVO_MOLD mold)
if(ORVO_MOLD)
  add_link_options(-fuse-ld=mold)
endif()

# The sources of a folder are compiled a dozen at a time: what they include is most of the work.
option(ORVO_UNITY "Compile the sources of a target together" ON)
set(CMAKE_UNITY_BUILD ${ORVO_UNITY})
set(CMAKE_UNITY_BUILD_BATCH_SIZE 12 CACHE STRING "Sources compiled together; 0: all of a folder")
if(ORVO_UNITY AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # A class of one source may hold a type of that source's anonymous namespace; GCC takes the source
  # for a header when another includes it.
  add_compile_options(-Wno-subobject-linkage)
endif()

include_directories("${CMAKE_SOURCE_DIR}")

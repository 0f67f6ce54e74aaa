# What keeps a build from nothing short.

# Several files of a target are compiled as one, so that a header is read once for all of them. The price: names in
# anonymous namespaces are unique within a folder, and an edit compiles the neighbours, too. For work on one file turn it
# off: -DCMAKE_UNITY_BUILD=OFF. script/check does, and so proves that each file includes what it uses. A file with
# compile options of its own stays alone.
option(CMAKE_UNITY_BUILD "Compile several files of a target as one" ON)
set(CMAKE_UNITY_BUILD_BATCH_SIZE 12 CACHE STRING "How many files at most")

# The standard library's headers that most files include, compiled once for all layers of a release instead of in each
# file. A file still includes what it uses: the other builds go without these.
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/StandardHeaders.cpp CONTENT "// A target wants a source file.\n")
add_library(standard_headers STATIC EXCLUDE_FROM_ALL ${CMAKE_BINARY_DIR}/StandardHeaders.cpp)
target_precompile_headers(standard_headers PRIVATE
  <algorithm> <array> <chrono> <filesystem> <functional> <map> <memory> <mutex> <optional> <span> <stdexcept>
  <string> <string_view> <utility> <vector>)

function(use_standard_headers)
  if(CMAKE_BUILD_TYPE STREQUAL "Release")
    foreach(target ${ARGN})
      target_precompile_headers(${target} REUSE_FROM standard_headers)
    endforeach()
  endif()
endfunction()

# optimize_less(LEVEL TARGET...): for programs that nobody waits for. -Og takes a third of the time to compile; -O1 is for
# what reads whole logs, which is as fast with it as with -O2.
function(optimize_less level)
  foreach(target ${ARGN})
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:${level}>)
  endforeach()
endfunction()

# For the one file that includes CLI11, the most expensive of all: without optimisation where no fortified
# functions of the C library ask for it.
function(contains_command_line file)
  set_source_files_properties(${file} PROPERTIES
    COMPILE_OPTIONS $<IF:$<CONFIG:Release>,-Og,-O0> SKIP_PRECOMPILE_HEADERS ON)
endfunction()

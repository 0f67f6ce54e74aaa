# What keeps a build from nothing short.

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

# For programs that do little once per start: half the time to compile, and nobody waits for what they compute.
function(optimize_little)
  foreach(target ${ARGN})
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-Og>)
  endforeach()
endfunction()

# The same for some files of a folder, where the others have much to read.
function(optimize_files_little)
  set_source_files_properties(${ARGN} PROPERTIES COMPILE_OPTIONS $<$<CONFIG:Release>:-Og>)
endfunction()

# For the file that includes CLI11, the most expensive of a program: without optimisation where no fortified
# functions of the C library ask for it.
function(contains_command_line file)
  set_source_files_properties(${file} PROPERTIES
    COMPILE_OPTIONS $<IF:$<CONFIG:Release>,-Og,-O0> SKIP_PRECOMPILE_HEADERS ON)
endfunction()

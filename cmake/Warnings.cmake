add_compile_options(
  -Wall -Wextra -Wpedantic -Wshadow -Wold-style-cast -Wcast-align
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor> $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>
  -Wformat -Wformat-security)

# GCC 12 reports copies inside std::string that overlap or are too long and cannot happen; the too long ones only where
# the standard headers are precompiled.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  foreach(warning restrict stringop-overflow array-bounds)
    add_compile_options($<$<CONFIG:Release>:-Wno-${warning}>)
  endforeach()
endif()

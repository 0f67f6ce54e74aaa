add_compile_options(
  -Wall -Wextra -Wpedantic -Wshadow -Wold-style-cast -Wcast-align
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor> $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>
  -Wformat -Wformat-security)

# GCC 12 reports overlapping copies inside "literal" + std::string that cannot happen.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  add_compile_options($<$<CONFIG:Release>:-Wno-restrict>)
endif()

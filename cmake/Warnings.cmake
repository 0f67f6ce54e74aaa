add_compile_options(
  -Wall -Wextra -Wpedantic -Wshadow -Wold-style-cast -Wcast-align
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor> $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>
  -Wformat -Wformat-security)

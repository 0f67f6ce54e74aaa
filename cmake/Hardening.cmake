# What is installed meets bytes from outside: an overrun ends the program instead of being used. Library calls and
# stack frames are checked, the program lies at an address of the kernel's choice, and the table of library functions
# cannot be written once it has started. script/check proves it on the programs.
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  include(CheckPIESupported)
  check_pie_supported()
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
  add_compile_options(-fstack-protector-strong)
  add_compile_definitions(_FORTIFY_SOURCE=2)
  add_link_options(LINKER:-z,relro,-z,now)
endif()

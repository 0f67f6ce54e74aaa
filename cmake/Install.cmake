# Where everything goes: a site's own folders below one prefix. The programs of a site know
# /usr/local/corvane/config as the place of the message catalogue, so that is where a site stands by default.
if(CMAKE_INSTALL_PREFIX_INITIALIZED_TO_DEFAULT)
  set(CMAKE_INSTALL_PREFIX /usr/local/corvane CACHE PATH "The site" FORCE)
endif()
set(install_files ${CMAKE_BINARY_DIR}/install)

# Two packages: the site, and the stand-in paging server with its own man page.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME soap)
install(TARGETS paging-standin RUNTIME DESTINATION bin COMPONENT standin)
install(FILES docs/man/paging-standin.1 DESTINATION share/man/man1 COMPONENT standin)

install(TARGETS quorbel-soap RUNTIME DESTINATION web/cgi-bin)
install(TARGETS cvmessages cvlogs quorbel-check quorbel-soapd RUNTIME DESTINATION bin)
install(PROGRAMS tools/setup/quorbel-setup DESTINATION bin)
set(completions share/bash-completion/completions)  # where bash looks for them, by the programs' names
foreach(program cvlogs cvmessages quorbel-check quorbel-setup)
  install(FILES tools/completion/quorbel RENAME ${program} DESTINATION ${completions})
endforeach()
install(FILES tools/completion/quorbel RENAME paging-standin DESTINATION ${completions} COMPONENT standin)

# The program runs in web/cgi-bin and looks for some files in ../config, for others in ../../config.
file(MAKE_DIRECTORY ${install_files})
file(CREATE_LINK ../config ${install_files}/config SYMBOLIC)
install(FILES ${install_files}/config DESTINATION web)

# share/ mirrors the checkout, so that the links between the pages lead somewhere.
install(FILES README.md DESTINATION share)
install(DIRECTORY docs DESTINATION share FILES_MATCHING PATTERN *.md PATTERN *.png PATTERN man EXCLUDE)
foreach(section 1 5 8)
  file(GLOB pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/man/*.${section})
  list(FILTER pages EXCLUDE REGEX "paging-standin")
  install(FILES ${pages} DESTINATION share/man/man${section})
endforeach()
install(DIRECTORY deploy DESTINATION share USE_SOURCE_PERMISSIONS)
if(NOT QUORBEL_SANITIZE)  # with sanitizers the description is not made
  install(FILES ${CMAKE_BINARY_DIR}/share/quorbel.wsdl ${CMAKE_BINARY_DIR}/share/index.html
          ${CMAKE_BINARY_DIR}/share/documentation.html DESTINATION share)
endif()
# Without what running them leaves behind.
install(DIRECTORY samples DESTINATION share USE_SOURCE_PERMISSIONS
        PATTERN build EXCLUDE PATTERN node_modules EXCLUDE PATTERN __pycache__ EXCLUDE)

# Only in the package: another prefix is not where the system looks for them.
install(FILES deploy/systemd/quorbel-soapd.service deploy/systemd/quorbel-soapd.socket
        DESTINATION /lib/systemd/system EXCLUDE_FROM_ALL)

install(CODE [[message(STATUS "To complete a new site, run ${CMAKE_INSTALL_PREFIX}/bin/quorbel-setup")]])

include(cmake/Development.cmake)
include(cmake/package/Package.cmake)

# script/package makes the Debian package from this.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quorbel-soap)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Quorbel maintainers <maintainers@quorbel.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "SOAP web service of a paging and alerting server")
set(CPACK_PACKAGE_DESCRIPTION "A CGI program that turns SOAP requests into commands of the paging server: sending and
querying messages, and administering groups, receivers, departments and users.
It needs a web server, which is left as it is: sample configurations are in
/usr/local/corvane/share/deploy, the operator's guide in
/usr/local/corvane/share/docs/operations.md.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr/local/corvane)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Before 7.85 libcurl ignores the option that keeps clients' addresses to http and https.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "ca-certificates, libcurl4 (>= 7.85)")
# Not more than suggested: a web server that comes along would be started, too.
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "lighttpd | httpd-cgi")

foreach(script postinst postrm)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${script}.in ${install_files}/${script} @ONLY)
  list(APPEND CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${install_files}/${script})
endforeach()
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

include(CPack)

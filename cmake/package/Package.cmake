# script/package makes the Debian packages from this.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quorbel)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Quorbel maintainers <maintainers@quorbel.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr/local/corvane)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL soap standin dev)
set(CPACK_COMPONENTS_GROUPING IGNORE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_SOAP_PACKAGE_NAME quorbel-soap)
set(CPACK_DEBIAN_SOAP_DESCRIPTION "SOAP web service of a paging and alerting server
A program that turns SOAP requests into commands of the paging server: sending and
querying messages, and administering groups, receivers, departments and users. It
runs as a CGI program or resident, behind SCGI.
It needs a web server, which is left as it is: sample configurations are in
/usr/local/corvane/share/deploy, the operator's guide in
/usr/local/corvane/share/docs/operations.md.")
# Before 7.85 libcurl ignores the option that keeps clients' addresses to http and https.
set(CPACK_DEBIAN_SOAP_PACKAGE_DEPENDS "ca-certificates, libcurl4 (>= 7.85)")
# Not more than suggested: a web server that comes along would be started, too.
set(CPACK_DEBIAN_SOAP_PACKAGE_SUGGESTS "lighttpd | httpd-cgi, quorbel-standin")
foreach(script postinst prerm postrm)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${script}.in ${install_files}/${script} @ONLY)
  list(APPEND CPACK_DEBIAN_SOAP_PACKAGE_CONTROL_EXTRA ${install_files}/${script})
endforeach()

set(CPACK_DEBIAN_STANDIN_PACKAGE_NAME quorbel-standin)
set(CPACK_DEBIAN_STANDIN_DESCRIPTION "Stand-in for a paging server that pages nobody
Takes the commands that the SOAP front end posts, prints them and answers them, for
trying an installation and for tests of clients.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libquorbel-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libsqlite3-dev, libexpat1-dev, libcurl4-openssl-dev | libcurl-dev")
set(CPACK_DEBIAN_DEV_DESCRIPTION "Class library of the paging server's programs
Files, threads, locks, sockets, event logs, log databases, INI files, the message
catalogue and the commands of the paging server, as headers and archives. Its CMake
package and pkg-config files lie in /usr/local/corvane/lib.")

include(CPack)

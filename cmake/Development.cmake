# What programs that link the class library need: component "dev", the package libquorbel-dev. One folder of
# headers, one archive a layer, a CMake package and pkg-config files.
set(dev_headers include/quorbel)
set(dev_public_headers
  cvdblib/sqlite3/src/CVDBexception.h
  cvdblib/sqlite3/src/CVMessageManager.h
  cvdblib/sqlite3/src/CVSQLite3Database.h
  cvdblib/sqlite3/src/CVSQLite3ResultSet.h
  cvdblib/sqlite3/src/MessageConstants.h
  cvdblib/sqlite3/src/PreparedStatement.h
  process/CVCProcess.h
  process/CVCSoapProcess.h
  process/CommandRecords.h
  process/HttpPoster.h
  process/HttpTransfer.h
  soap/Methods.h
  soap/RequestRecord.h
  syslib/CVDBProcessorFatalException.h
  syslib/CVIniReaderWriterEx.h
  syslib/CVLogDBProcessorInterface.h
  syslib/CVLogInterface.h
  syslib/CVLogSQLiteProcessor.h
  syslib/CVsysEventLogInterface.h
  syslib/CVsysEventLogModNames.h
  syslib/CVsysEventLogWriterInterface.h
  syslib/IniReaderWriter.h
  syslib/LogFile.h
  syslib/LogLevel.h
  syslib/LogTables.h
  syslib/SocketTrace.h
  util/BoundedText.h
  util/FormatExpansion.h
  util/SpoolDirectories.h
  util/StringRoutines.h
  util/TextBuffer.h
)

install(DIRECTORY include/ DESTINATION ${dev_headers} COMPONENT dev EXCLUDE_FROM_ALL)
foreach(header ${dev_public_headers})
  cmake_path(GET header PARENT_PATH folder)
  install(FILES ${header} DESTINATION ${dev_headers}/${folder} COMPONENT dev EXCLUDE_FROM_ALL)
endforeach()

# dev_layer(TARGET NAME REQUIRES LIBS): the layer's archive, known to others as Quorbel::NAME.
function(dev_layer target name requires libs)
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name} OUTPUT_NAME quorbel-${name})
  target_compile_features(${target} PUBLIC cxx_std_20)
  install(TARGETS ${target} EXPORT QuorbelTargets ARCHIVE DESTINATION lib COMPONENT dev EXCLUDE_FROM_ALL)
  configure_file(cmake/package/layer.pc.in ${install_files}/quorbel-${name}.pc @ONLY)
  install(FILES ${install_files}/quorbel-${name}.pc DESTINATION lib/pkgconfig COMPONENT dev EXCLUDE_FROM_ALL)
endfunction()

dev_layer(platform platform "" "-pthread")
dev_layer(util util "quorbel-platform" "")
dev_layer(cvdblib db "quorbel-util" "-lsqlite3")
dev_layer(syslib log "quorbel-db" "")
dev_layer(soap soap "quorbel-log" "-lexpat")
dev_layer(process paging "quorbel-soap" "-lcurl")

include(CMakePackageConfigHelpers)
write_basic_package_version_file(${install_files}/QuorbelConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES cmake/package/QuorbelConfig.cmake ${install_files}/QuorbelConfigVersion.cmake
        DESTINATION lib/cmake/Quorbel COMPONENT dev EXCLUDE_FROM_ALL)
install(EXPORT QuorbelTargets NAMESPACE Quorbel:: DESTINATION lib/cmake/Quorbel COMPONENT dev EXCLUDE_FROM_ALL)

# Each public header alone, by nothing but the installed folder: cmake --build --preset release --target public_headers
add_custom_target(public_headers
  COMMAND ${CMAKE_COMMAND} --install ${CMAKE_BINARY_DIR} --component dev --prefix ${CMAKE_BINARY_DIR}/public
  COMMAND ${PROJECT_SOURCE_DIR}/script/check-headers ${CMAKE_BINARY_DIR}/public/${dev_headers} ${CMAKE_CXX_COMPILER}
  DEPENDS platform util cvdblib syslib soap process
  COMMENT "Compiling each public header alone")

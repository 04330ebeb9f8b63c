# cmake --install, find_package(kfl) and pkg-config kfl.
include(CMakePackageConfigHelpers)

# A written list, so that nothing private slips in.
set(kfl_public_headers
    AString.h
    BoundedStringBase.h
    Buffer.h
    Collection.h
    CommunicationSocket.h
    Container.h
    Host.h
    IniFileParser.h
    KeyValue.h
    LocalHeap.h
    OSThread.h
    Protectable.h
    RandomNumberGenerator.h
    RecordingHost.h
    Rijndael.h
    SObject.h
    SObjectArray.h
    StringFormat.h
    StringsContainer.h
    URIParser.h
    VoidPtrArray.h
    VoidPtrCollection.h
    VoidPtrStack.h
    convenience.h
    export.h
    kfl.h
    process.h
    sockets.h
    streams.h
    syslog_events.h
    version.h)
list(TRANSFORM kfl_public_headers PREPEND ${PROJECT_SOURCE_DIR}/include/kfl/)
install(FILES ${kfl_public_headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kfl COMPONENT development)
set(kfl_convenience_headers
    convenience/Ref.h
    convenience/SocketGuard.h
    convenience/WaitStatus.h
    convenience/datagrams.h
    convenience/ranges.h
    convenience/view.h
    convenience/wipe.h)
list(TRANSFORM kfl_convenience_headers PREPEND ${PROJECT_SOURCE_DIR}/include/kfl/)
install(FILES ${kfl_convenience_headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kfl/convenience COMPONENT development)

install(TARGETS kfl EXPORT kfl-targets
        LIBRARY COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS kfl-host kfl-recording-host EXPORT kfl-targets ARCHIVE COMPONENT development)
if(KFL_TOOLS)
  install(TARGETS kfl-tool RUNTIME COMPONENT tools)
  file(GLOB kfl_command_pages CONFIGURE_DEPENDS docs/man/*.1)
  install(FILES ${kfl_command_pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
  install(FILES tools/kfl/completion.bash RENAME kfl COMPONENT tools
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
endif()

set(kfl_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kfl)
install(EXPORT kfl-targets NAMESPACE kfl:: FILE kflTargets.cmake DESTINATION ${kfl_cmake_dir}
        COMPONENT development)
configure_package_config_file(cmake/kflConfig.cmake.in kflConfig.cmake
                              INSTALL_DESTINATION ${kfl_cmake_dir})
write_basic_package_version_file(kflConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/kflConfig.cmake ${PROJECT_BINARY_DIR}/kflConfigVersion.cmake
        DESTINATION ${kfl_cmake_dir} COMPONENT development)

install(FILES docs/man/kfl.7 DESTINATION ${CMAKE_INSTALL_MANDIR}/man7 COMPONENT development)

# The .pc file finds the prefix from where it lies, so that it is right after any install.
set(kfl_pc_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH kfl_pc_prefix "/prefix/${kfl_pc_dir}" "/prefix")
string(REGEX REPLACE "/$" "" kfl_pc_prefix "${kfl_pc_prefix}")
configure_file(cmake/kfl.pc.in kfl.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kfl.pc DESTINATION ${kfl_pc_dir} COMPONENT development)

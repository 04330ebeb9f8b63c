# cpack: the Debian packages libkfl1, libkfl-dev and kfl-tools, and what gdb needs of the first and the last.
set(KFL_MAINTAINER "libkfl developers <libkfl@localhost>" CACHE STRING "Who maintains the packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT ${KFL_MAINTAINER})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_COMPONENTS_ALL runtime development)
if(KFL_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# What is stripped goes into packages of its own, for gdb.
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)

# What a program needs of other packages, dpkg-shlibdeps finds out; it looks for libkfl in the build folder.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})

set(kfl_runtime_package libkfl${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${kfl_runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "The shared library that its host processes load.")
# Programs that are built against it learn from these which package, and which version of it, they need.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/packages/symbols)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_BINARY_DIR}/package_symbols.cmake)
configure_file(packaging/debian/package_symbols.cmake.in package_symbols.cmake @ONLY)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkfl-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${kfl_runtime_package} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "Headers, ready definitions of what a host supplies, and what CMake and pkg-config read.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME kfl-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${kfl_runtime_package} (>= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
    "The kfl command, which gives its services to shell scripts and people on a device.")

include(CPack)

# Debian packages, made from the build folder with `cpack -G DEB`:
#   orx-runtime    the core's libraries, the DFX plug-in, orx-demo and its orx.json files, docs
#   orx-dev        headers, the CMake package, the pkg-config file
#   orx-maintaind  maintaind and orxmaint, with the systemd unit
# Dependencies on Debian's libraries (Cyclone DDS, SQLite, safeclib, DLT, the C++ runtime) are
# found by dpkg-shlibdeps from what the binaries link; the packages' dependencies on each other
# are stated here.
set(CPACK_PACKAGE_NAME orx)
set(CPACK_PACKAGE_VENDOR "orx")
set(CPACK_PACKAGE_CONTACT "orx maintainers <orx@localhost>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
  "Service-oriented communication core with its maintenance and diagnostics plug-in")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL runtime dev maintaind)
set(CPACK_DEB_COMPONENT_INSTALL ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Our own libraries, which the programs of orx-maintaind link, come from orx-runtime; without
# this folder dpkg-shlibdeps could not tell where they are.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS OFF)

set(orx_exact "(= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME orx-runtime)
# Log lines go to DLT only where a dlt-daemon runs (log.dlt / ORX_LOG_DLT).
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SUGGESTS "dlt-daemon")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
  "Runtime: the core's shared libraries (events, methods and fields over DDS),\nthe DFX plug-in liborxcm_dfx.so that reports each application to maintaind,\nand the orx-demo example applications.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME orx-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
# Headers of the core include nlohmann-json (orx.json reading) and safeclib; the CMake package
# finds them.
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
  "orx-runtime ${orx_exact}, nlohmann-json3-dev (>= 3), libsafec-dev, pkg-config")
set(CPACK_DEBIAN_DEV_DESCRIPTION
  "Development files: public headers, the CMake package (find_package(orx)\nwith orx::vcc_app) and the pkg-config file orx-vcc-app.pc.")

set(CPACK_DEBIAN_MAINTAIND_PACKAGE_NAME orx-maintaind)
set(CPACK_DEBIAN_MAINTAIND_PACKAGE_SECTION net)
set(CPACK_DEBIAN_MAINTAIND_PACKAGE_DEPENDS "orx-runtime ${orx_exact}")
# systemd reads the new or removed unit; the service is neither enabled nor started.
set(CPACK_DEBIAN_MAINTAIND_PACKAGE_CONTROL_EXTRA
  ${PROJECT_SOURCE_DIR}/packaging/debian/postinst ${PROJECT_SOURCE_DIR}/packaging/debian/postrm)
set(CPACK_DEBIAN_MAINTAIND_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_MAINTAIND_DESCRIPTION
  "Maintenance daemon: maintaind keeps the registry of the running applications\n(SQLite) and answers orxmaint, its command-line tool. With the systemd unit\nmaintaind.service (not enabled at install).")

include(CPack)

# Install layout and the helpers that install our libraries, headers and programs.
#
#   <prefix>/bin                      maintaind, orxmaint, orx-demo
#   <prefix>/lib                      the core's libraries and the DFX plug-in liborxcm_dfx.so
#   <prefix>/lib/cmake/orx            the CMake package: find_package(orx CONFIG)
#   <prefix>/lib/pkgconfig            orx-vcc-app.pc
#   <prefix>/include                  public headers
#   <prefix>/share/orx/examples       the example applications' orx.json files
#   <prefix>/share/doc/orx            README and docs
#   <prefix>/lib/systemd/system       maintaind.service
#
# Libraries go to lib/, not to the multiarch folder: the daemon, the tool and the demo load the
# plug-in from <exe dir>/../lib, and every binary finds our libraries through the same relative
# run path, so an installed tree works wherever it is put.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(ORX_INSTALL_LIBDIR lib)
set(ORX_INSTALL_CMAKEDIR ${ORX_INSTALL_LIBDIR}/cmake/orx)
set(ORX_INSTALL_EXAMPLEDIR ${CMAKE_INSTALL_DATAROOTDIR}/orx/examples)
set(ORX_INSTALL_DOCDIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/orx)
# For libraries in lib/ and programs in bin/ alike. Set before any target is made.
set(CMAKE_INSTALL_RPATH "$ORIGIN/../${ORX_INSTALL_LIBDIR}")

# Installs a library of ours into the "orx" export set under the name orx::<export name>, with
# the headers of its include folder (all of them but the EXCLUDE patterns, e.g. test helpers
# and internal folders).
#   orx_install_library(<target> [EXPORT_NAME name] [HEADERS dir] [EXCLUDE pattern...])
# The target's include folders inside the source tree are marked build-only, and the installed
# include/ is added for users of the package.
function(orx_install_library target)
  cmake_parse_arguments(ARG "" "EXPORT_NAME;HEADERS" "EXCLUDE" ${ARGN})
  set(scope INTERFACE_INCLUDE_DIRECTORIES)
  get_target_property(dirs ${target} ${scope})
  if(dirs)
    set(wrapped "")
    foreach(dir IN LISTS dirs)
      if(dir MATCHES "^\\$<")
        list(APPEND wrapped "${dir}")
      else()
        list(APPEND wrapped "$<BUILD_INTERFACE:${dir}>")
      endif()
    endforeach()
    list(APPEND wrapped "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
    set_property(TARGET ${target} PROPERTY ${scope} "${wrapped}")
  endif()
  if(ARG_EXPORT_NAME)
    set_property(TARGET ${target} PROPERTY EXPORT_NAME ${ARG_EXPORT_NAME})
  endif()
  install(TARGETS ${target} EXPORT orx
    LIBRARY DESTINATION ${ORX_INSTALL_LIBDIR} COMPONENT runtime
    ARCHIVE DESTINATION ${ORX_INSTALL_LIBDIR} COMPONENT dev)
  if(ARG_HEADERS)
    set(excludes "")
    foreach(pattern IN LISTS ARG_EXCLUDE)
      list(APPEND excludes PATTERN "${pattern}" EXCLUDE)
    endforeach()
    install(DIRECTORY ${ARG_HEADERS}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev
      FILES_MATCHING PATTERN "*.h" ${excludes})
  endif()
endfunction()

# Installs a program of ours into bin/ as part of `component` (runtime or maintaind).
function(orx_install_program target component)
  install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${component})
endfunction()

# Writes the CMake package (orxConfig.cmake, orxConfigVersion.cmake, orxTargets.cmake) and the
# pkg-config file. Called once, after every component has added its targets to the export set.
function(orx_install_package)
  install(EXPORT orx NAMESPACE orx:: FILE orxTargets.cmake
    DESTINATION ${ORX_INSTALL_CMAKEDIR} COMPONENT dev)
  configure_package_config_file(${PROJECT_SOURCE_DIR}/packaging/orxConfig.cmake.in
    ${PROJECT_BINARY_DIR}/packaging/orxConfig.cmake
    INSTALL_DESTINATION ${ORX_INSTALL_CMAKEDIR}
    PATH_VARS ORX_INSTALL_LIBDIR)
  # 0.x releases may change the interface with every minor version.
  write_basic_package_version_file(${PROJECT_BINARY_DIR}/packaging/orxConfigVersion.cmake
    VERSION ${PROJECT_VERSION} COMPATIBILITY SameMinorVersion)
  install(FILES ${PROJECT_BINARY_DIR}/packaging/orxConfig.cmake
    ${PROJECT_BINARY_DIR}/packaging/orxConfigVersion.cmake
    DESTINATION ${ORX_INSTALL_CMAKEDIR} COMPONENT dev)

  configure_file(${PROJECT_SOURCE_DIR}/packaging/orx-vcc-app.pc.in
    ${PROJECT_BINARY_DIR}/packaging/orx-vcc-app.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/packaging/orx-vcc-app.pc
    DESTINATION ${ORX_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

  # With the runtime, which every package depends on: the service unit points at them.
  install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${ORX_INSTALL_DOCDIR}
    COMPONENT runtime)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${ORX_INSTALL_DOCDIR}
    COMPONENT runtime FILES_MATCHING PATTERN "*.md")
endfunction()

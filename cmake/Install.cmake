# What `cmake --install` puts where. Components:
#   resolver  the library's headers, the static library, its CMake package and pkg-config file
#   targets   the hosts for real programs, and the tests that sources of labels and memory must pass;
#             needs the component resolver, libdw and libelf
#   command   the command `resolve`, when it is built
#   docs      the documents
# Everything finds the rest by relative paths, so an installed tree can be moved.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/StringResolver)
# Below a folder of their own: "host/..." and "model/..." are too common to stand in include/.
set(header_dir ${CMAKE_INSTALL_INCLUDEDIR}/stringresolver)

install(TARGETS stringresolver_host stringresolver_model stringresolver
  EXPORT StringResolverTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT resolver
  FILE_SET HEADERS DESTINATION ${header_dir} COMPONENT resolver)
install(EXPORT StringResolverTargets NAMESPACE StringResolver:: DESTINATION ${package_dir}
  COMPONENT resolver)
if(STRINGRESOLVER_TARGETS)
  set(target_libraries stringresolver_targets)
  if(TARGET stringresolver_contract)
    list(APPEND target_libraries stringresolver_contract)
  endif()
  install(TARGETS ${target_libraries}
    EXPORT StringResolverHostTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT targets
    FILE_SET HEADERS DESTINATION ${header_dir} COMPONENT targets)
  install(EXPORT StringResolverHostTargets NAMESPACE StringResolver:: DESTINATION ${package_dir}
    COMPONENT targets)
  install(FILES ${CMAKE_CURRENT_LIST_DIR}/StringResolver-targets.cmake DESTINATION ${package_dir}
    COMPONENT targets)
endif()
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/StringResolverConfig.cmake.in
  ${PROJECT_BINARY_DIR}/StringResolverConfig.cmake
  INSTALL_DESTINATION ${package_dir} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/StringResolverConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/StringResolverConfig.cmake
              ${PROJECT_BINARY_DIR}/StringResolverConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT resolver)

set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
set(somewhere /prefix)
cmake_path(RELATIVE_PATH somewhere BASE_DIRECTORY /prefix/${pkgconfig_dir}
           OUTPUT_VARIABLE prefix_from_pkgconfig)
configure_file(${CMAKE_CURRENT_LIST_DIR}/stringresolver.pc.in
  ${PROJECT_BINARY_DIR}/stringresolver.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/stringresolver.pc DESTINATION ${pkgconfig_dir}
  COMPONENT resolver)

if(TARGET resolve)
  install(TARGETS resolve RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT command)
endif()

file(GLOB documents CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/README.md
     ${PROJECT_SOURCE_DIR}/docs/*.md)
install(FILES ${documents} DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT docs)

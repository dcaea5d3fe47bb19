# The component `targets` of the package: hosts for real programs. Their library is static, so whoever
# links it needs what it uses.
include(CMakeFindDependencyMacro)
find_dependency(PkgConfig)
pkg_check_modules(LIBDW QUIET IMPORTED_TARGET libdw)
pkg_check_modules(LIBELF QUIET IMPORTED_TARGET libelf)
if(LIBDW_FOUND AND LIBELF_FOUND)
  include(${CMAKE_CURRENT_LIST_DIR}/StringResolverHostTargets.cmake)
  set(StringResolver_targets_FOUND TRUE)
else()
  set(StringResolver_targets_FOUND FALSE)
  string(APPEND StringResolver_NOT_FOUND_MESSAGE
    "The component targets needs libdw and libelf (Debian: libdw-dev, libelf-dev).")
endif()

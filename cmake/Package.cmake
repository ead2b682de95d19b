# What a host project gets: cmake --install, the ZIP of script/package, and find_package(orvellogin CONFIG).

include(CMakePackageConfigHelpers)

set(share ${CMAKE_INSTALL_DATADIR}/orvellogin)
set(package_files ${CMAKE_INSTALL_LIBDIR}/cmake/orvellogin)

install(PROGRAMS ${runtime_files} TYPE BIN)
install(EXPORT orvellogin FILE orvelloginTargets.cmake NAMESPACE orvellogin:: DESTINATION ${package_files})
configure_package_config_file(
  cmake/orvelloginConfig.cmake.in ${CMAKE_BINARY_DIR}/orvelloginConfig.cmake
  INSTALL_DESTINATION ${package_files} PATH_VARS CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(
  ${CMAKE_BINARY_DIR}/orvelloginConfigVersion.cmake COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)
install(FILES
  ${CMAKE_BINARY_DIR}/orvelloginConfig.cmake ${CMAKE_BINARY_DIR}/orvelloginConfigVersion.cmake
  DESTINATION ${package_files})

install(FILES README.md CHANGELOG.md SECURITY.md LICENSE DESTINATION ${share})
install(DIRECTORY docs DESTINATION ${share} PATTERN Doxyfile EXCLUDE PATTERN *.dot EXCLUDE)
install(DIRECTORY examples DESTINATION ${share})
# Until the real login manager is at hand: the stand-ins, compiled, in the folder that goes next to the library.
install(DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/OrvelLoginManagerClient DESTINATION ${share}/examples/standins)

# The compiler's runtime DLLs are other people's work: their notices, as the compiler's packages bring them.
install(FILES NOTICES.md DESTINATION ${share}/notices)
install(FILES /usr/share/doc/gcc-mingw-w64-i686-posix-runtime/copyright
  DESTINATION ${share}/notices RENAME gcc-runtime.txt)
install(FILES /usr/share/doc/mingw-w64-i686-dev/copyright DESTINATION ${share}/notices RENAME mingw-w64.txt)
install(FILES /usr/share/common-licenses/GPL-3 DESTINATION ${share}/notices RENAME GPL-3.txt)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME ${PROJECT_NAME}-${PROJECT_VERSION}-mingw-x86)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)

# What host projects get: cmake --install installs the library, and script/package makes a ZIP that also contains documents
# and examples.

include(CMakePackageConfigHelpers)

# The builds for each architecture are installed into the same folder. All but these is the same for each.
set(bin_folder bin/${orvellogin_architecture})
set(lib_folder lib/${orvellogin_architecture})
set(config_folder lib/cmake/orvellogin)

install(TARGETS orvellogin orvelloginc orvellogin_client EXPORT orvellogin
  RUNTIME DESTINATION ${bin_folder} ARCHIVE DESTINATION ${lib_folder})
install(FILES ${import_files} DESTINATION ${lib_folder})
install(DIRECTORY login/include/ DESTINATION include)
install(FILES login/c/orvelloginc.h ${orvellogin_BINARY_DIR}/login/include/orvelloginversion.h DESTINATION include)
install(PROGRAMS ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/OrvelLoginClientCLR.dll ${runtime_files} DESTINATION ${bin_folder})
if(TARGET orvdiag)
  install(TARGETS orvdiag RUNTIME DESTINATION ${bin_folder})
endif()

# For CMake: the targets of each architecture, and what chooses between them.
install(EXPORT orvellogin
  FILE orvelloginTargets.cmake NAMESPACE orvellogin:: DESTINATION ${config_folder}/${orvellogin_architecture})
write_basic_package_version_file(
  ${orvellogin_BINARY_DIR}/orvelloginConfigVersion.cmake COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)
install(FILES
  packaging/orvelloginConfig.cmake ${orvellogin_BINARY_DIR}/orvelloginConfigVersion.cmake
  cmake/Deploy.cmake cmake/DeployFiles.cmake
  DESTINATION ${config_folder})

# For builds that use pkg-config, one file for each target of the package. Paths are relative to the file, so that the package
# can be moved. pkg-config escapes them itself.
function(orvellogin_add_pkg_config name description cflags libs)
  configure_file(packaging/orvellogin.pc.in ${orvellogin_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${orvellogin_BINARY_DIR}/${name}.pc DESTINATION ${lib_folder}/pkgconfig)
endfunction()
# The import library by its path, because with -static, -l does not find import libraries.
set(plain_functions "\${libdir}/liborvelloginc.dll.a")
orvellogin_add_pkg_config(orvellogin "The class that orvellogin.dll exports"
  "-I\${includedir}" "-L\${libdir} -lorvellogin")
orvellogin_add_pkg_config(orvellogin-client "The header-only class over orvelloginc.dll"
  "-DORVELLOGIN_HEADER_ONLY -I\${includedir}" "${plain_functions}")
orvellogin_add_pkg_config(orvellogin-c "The plain functions of orvelloginc.dll" "-I\${includedir}" "${plain_functions}")

# Installs only into the ZIP. These files would be out of place in a prefix that other software shares.
function(orvellogin_install_in_zip)
  install(${ARGV} COMPONENT zip EXCLUDE_FROM_ALL)
endfunction()

file(READ README.md readme)
string(REGEX MATCH "\n## A host\n\n(.*)\n## Sources\n" host "${readme}")
set(host "${CMAKE_MATCH_1}")
configure_file(packaging/package-readme.md.in ${orvellogin_BINARY_DIR}/package-readme/README.md @ONLY)
orvellogin_install_in_zip(FILES ${orvellogin_BINARY_DIR}/package-readme/README.md CHANGELOG.md LICENSE NOTICES.md SECURITY.md DESTINATION .)
orvellogin_install_in_zip(FILES
  docs/crashes.md docs/diagnostics.md docs/integration.md docs/settings.md docs/troubleshooting.md
  DESTINATION docs)
file(GLOB pictures CONFIGURE_DEPENDS docs/signin-window*.png)
orvellogin_install_in_zip(FILES ${pictures} DESTINATION docs)
orvellogin_install_in_zip(DIRECTORY bindings examples DESTINATION .)
# For plug-ins that need it themselves.
orvellogin_install_in_zip(FILES login/c/UnwindTables.cpp DESTINATION src)
file(GLOB toolchains CONFIGURE_DEPENDS cmake/mingw*.cmake)
orvellogin_install_in_zip(FILES cmake/Managed.cmake ${toolchains} DESTINATION cmake)
# The compiled stand-ins, for use until the real login manager is available, in the folder that goes next to the library.
orvellogin_install_in_zip(DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/OrvelLoginManagerClient DESTINATION examples/standins)

# The notices of third-party work, the compiler's runtime and the header-only libraries in orvdiag, from their Debian packages.
orvellogin_install_in_zip(FILES /usr/share/doc/gcc-mingw-w64-i686-posix-runtime/copyright
  DESTINATION notices RENAME gcc-runtime.txt)
orvellogin_install_in_zip(FILES /usr/share/doc/mingw-w64-i686-dev/copyright DESTINATION notices RENAME mingw-w64.txt)
orvellogin_install_in_zip(FILES /usr/share/doc/libcli11-dev/copyright DESTINATION notices RENAME cli11.txt)
orvellogin_install_in_zip(FILES /usr/share/doc/nlohmann-json3-dev/copyright DESTINATION notices RENAME nlohmann-json.txt)
orvellogin_install_in_zip(FILES /usr/share/common-licenses/GPL-3 DESTINATION notices RENAME GPL-3.txt)

# What package.py has to know of this build.
file(CONFIGURE OUTPUT ${orvellogin_BINARY_DIR}/package.json CONTENT [[
{"architecture": "@orvellogin_architecture@", "version": "@PROJECT_VERSION@", "source": "@orvellogin_SOURCE_DIR@",
 "cmake": "@CMAKE_COMMAND@", "objcopy": "@CMAKE_OBJCOPY@"}
]] @ONLY)

# Version information, made from project(VERSION), for what a customer gets to see.

# add_version_info(TARGET DESCRIPTION [MANIFEST file])
# A program without a manifest of its own gets cmake/program.manifest.
function(add_version_info target description)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "MANIFEST" "")
  get_target_property(type ${target} TYPE)
  if(type STREQUAL EXECUTABLE)
    set(file_type VFT_APP)
    set(file_name ${target}.exe)
    if(NOT arg_MANIFEST)
      set(arg_MANIFEST ${PROJECT_SOURCE_DIR}/cmake/program.manifest)
    endif()
    # 24 is RT_MANIFEST, 1 the manifest that a process is created with.
    file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${target}_manifest.rc CONTENT "1 24 \"${arg_MANIFEST}\"\n")
    set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/${target}_manifest.rc PROPERTIES
      OBJECT_DEPENDS ${arg_MANIFEST})
    target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}_manifest.rc)
  else()
    set(file_type VFT_DLL)
    set(file_name ${target}.dll)
  endif()
  configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc @ONLY)
  target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
endfunction()

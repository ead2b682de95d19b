# Version information, made from the version of the project orvellogin, for what a customer gets to see.

# add_version_info(TARGET DESCRIPTION [OWN_MANIFEST])
# A program gets cmake/program.manifest too, unless its own resources have a manifest.
function(add_version_info target description)
  cmake_parse_arguments(PARSE_ARGV 2 arg "OWN_MANIFEST" "" "")
  get_target_property(type ${target} TYPE)
  if(type STREQUAL EXECUTABLE)
    set(file_type VFT_APP)
    set(file_name ${target}.exe)
    if(NOT arg_OWN_MANIFEST)
      set(manifest ${orvellogin_SOURCE_DIR}/cmake/program.manifest)
      # 24 is RT_MANIFEST, 1 the manifest that a process is created with.
      file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${target}_manifest.rc CONTENT "1 24 \"${manifest}\"\n")
      set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/${target}_manifest.rc PROPERTIES
        OBJECT_DEPENDS ${manifest})
      target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}_manifest.rc)
    endif()
  else()
    set(file_type VFT_DLL)
    set(file_name ${target}.dll)
  endif()
  configure_file(${orvellogin_SOURCE_DIR}/cmake/version.rc.in ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc @ONLY)
  target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
endfunction()

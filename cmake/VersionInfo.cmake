# Version information for DLLs and programs; for programs also a manifest and an icon.

# orvellogin_add_version_info(TARGET DESCRIPTION [MANIFEST file])
# The default manifest is cmake/program.manifest. The resources are a target of their own without include folders, because windres
# fails if the path of one contains "'" or "&".
function(orvellogin_add_version_info target description)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "MANIFEST" "")
  set(folder ${orvellogin_SOURCE_DIR}/cmake)
  get_target_property(type ${target} TYPE)
  set(file_type VFT_DLL)
  set(file_name ${target}.dll)
  set(program_resources "")
  set(used ${folder}/version.rc.in)
  if(type STREQUAL EXECUTABLE)
    set(file_type VFT_APP)
    set(file_name ${target}.exe)
    if(NOT arg_MANIFEST)
      set(arg_MANIFEST ${folder}/program.manifest)
    endif()
    # 24 is RT_MANIFEST, 1 the identifier of a process's own manifest. The shell shows the icon with the lowest identifier.
    set(program_resources "1 24 \"${arg_MANIFEST}\"\n1 ICON \"${folder}/orvel.ico\"")
    list(APPEND used ${arg_MANIFEST} ${folder}/orvel.ico)
  endif()
  configure_file(${folder}/version.rc.in ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc @ONLY)
  set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc PROPERTIES OBJECT_DEPENDS "${used}")
  add_library(${target}_version OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
  target_link_libraries(${target} PRIVATE ${target}_version)
endfunction()

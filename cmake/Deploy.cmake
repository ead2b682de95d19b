# Copies the files that a program needs beside it to use the library. Both the library's own build and its package include
# this.

# orvellogin_deploy(TARGET): after each build, copies the library's DLLs that the program needs beside it, and those of the
# compiler's runtime. These depend on the targets that the program links, directly or indirectly. Add the login manager's
# folder, OrvelLoginManagerClient, yourself.
function(orvellogin_deploy target)
  foreach(library orvellogin::orvellogin orvellogin::c)
    if(TARGET ${library})
      # Links the program again, and so copies the files again, when only they have changed.
      set(linked $<IN_LIST:$<TARGET_FILE:${library}>,$<TARGET_RUNTIME_DLLS:${target}>>)
      set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS
        $<${linked}:$<TARGET_FILE:${library}>>
        $<${linked}:$<TARGET_FILE_DIR:${library}>/OrvelLoginClientCLR.dll>)
    endif()
  endforeach()
  # For the exported class, the runtime that is newer: the program's own, or that of the library.
  set(own_is_newer OFF)
  if(TARGET orvellogin::orvellogin)
    get_target_property(version orvellogin::orvellogin ORVELLOGIN_COMPILER_VERSION)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER version)
      set(own_is_newer ON)
    endif()
  endif()
  set(runtime)
  if(MINGW)
    set(compiler ${CMAKE_CXX_COMPILER})
    if(NOT compiler)
      set(compiler ${CMAKE_C_COMPILER})
    endif()
    set(runtime -DCOMPILER=${compiler} -DOBJDUMP=${CMAKE_OBJDUMP} -DOWN_IS_NEWER=${own_is_newer})
  endif()
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:${target}> "-DLINKED=$<TARGET_RUNTIME_DLLS:${target}>" ${runtime}
      -P ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/DeployFiles.cmake
    VERBATIM)
endfunction()

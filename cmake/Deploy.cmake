# Copies the files that a program needs beside it to use the library. Both the library's own build and its package include
# this. It uses global properties, because a function runs in its caller's scope and may not see this file's variables.

# The compiler's runtime DLLs, which orvellogin.dll shares with its host.
set(unwinding dw2)
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(unwinding seh)
endif()
set_property(GLOBAL PROPERTY orvellogin_compiler_runtime
  libgcc_s_${unwinding}-1.dll libstdc++-6.dll libwinpthread-1.dll)

# orvellogin_deploy(TARGET): after each build, copies the library's DLLs that the program needs beside it. These depend on the
# targets that the program links, directly or indirectly. Add the login manager's folder, OrvelLoginManagerClient, yourself.
function(orvellogin_deploy target)
  foreach(library orvellogin::orvellogin orvellogin::c)
    if(NOT TARGET ${library})
      continue()
    endif()
    set(files $<TARGET_FILE:${library}> $<TARGET_FILE_DIR:${library}>/OrvelLoginClientCLR.dll)
    if(library STREQUAL "orvellogin::orvellogin")
      get_property(runtime GLOBAL PROPERTY orvellogin_compiler_runtime)
      foreach(name IN LISTS runtime)
        orvellogin_newer_runtime(file ${name})
        if(NOT file)
          set(file $<TARGET_FILE_DIR:${library}>/${name})
        endif()
        list(APPEND files ${file})
      endforeach()
    endif()
    set(linked $<IN_LIST:$<TARGET_FILE:${library}>,$<TARGET_RUNTIME_DLLS:${target}>>)
    add_custom_command(TARGET ${target} POST_BUILD
      COMMAND ${CMAKE_COMMAND} -E
        "$<IF:${linked},copy_if_different;${files};$<TARGET_FILE_DIR:${target}>,true>"
      COMMAND_EXPAND_LISTS VERBATIM)
  endforeach()
endfunction()

# A host built by a newer g++ than the library needs its own compiler's runtime, which also works for the library.
function(orvellogin_newer_runtime result name)
  set(path "")
  get_property(library_compiler GLOBAL PROPERTY orvellogin_compiler_version)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER "${library_compiler}")
    execute_process(
      COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name} OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT IS_ABSOLUTE "${path}")
      set(path "")
    endif()
  endif()
  set(${result} "${path}" PARENT_SCOPE)
endfunction()

# Makes import libraries of a DLL with plain functions, also for the linkers of other compilers.

find_program(ORVELLOGIN_LLVM_DLLTOOL NAMES llvm-dlltool)

# orvellogin_add_import_libraries(TARGET FILES)
# TARGET is a DLL of __stdcall functions, exported without decoration. Makes TARGET.def and, if LLVM's dlltool is installed,
# TARGET.lib for Microsoft's linker and lld, and sets FILES to these. Also replaces the linker's own import library, which has
# the names as exported, whereas compilers refer to the decorated names.
function(orvellogin_add_import_libraries target result)
  set(raw ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/${target}_exports.def)
  set(def ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/${target}.def)
  set(lib ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/${target}.lib)
  set(files ${def})
  # -Xlinker instead of -Wl, which would split a folder's name at a ",".
  target_link_options(${target} PRIVATE -Wl,--kill-at "SHELL:-Xlinker --output-def -Xlinker \"${raw}\"")
  # -k removes the decoration for the DLL's export names; the symbols keep it.
  set(make_lib)
  set(machine i386)
  if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(machine i386:x86-64)
  endif()
  if(ORVELLOGIN_LLVM_DLLTOOL)
    set(make_lib COMMAND ${ORVELLOGIN_LLVM_DLLTOOL} -m ${machine} -k -d ${def} -D $<TARGET_FILE_NAME:${target}> -l ${lib})
    list(APPEND files ${lib})
  endif()
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_COMMAND} -DFROM=${raw} -DTO=${def} -DDLL=$<TARGET_FILE_NAME:${target}>
      -P ${orvellogin_SOURCE_DIR}/cmake/DecoratedNames.cmake
    # Run in the folder itself, because dlltool derives symbol names from the paths, and the output must be reproducible.
    COMMAND ${CMAKE_COMMAND} -E chdir ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY} ${CMAKE_DLLTOOL} -k -d ${target}.def
      -D $<TARGET_FILE_NAME:${target}> -l $<TARGET_LINKER_FILE_NAME:${target}> --temp-prefix ${target}
      --deterministic-libraries
    ${make_lib}
    BYPRODUCTS ${files}
    VERBATIM)
  set(${result} ${files} PARENT_SCOPE)
endfunction()

# Import libraries of a DLL of plain functions, for the linkers of other compilers too.

find_program(LLVM_DLLTOOL NAMES llvm-dlltool-14 llvm-dlltool)

# add_import_libraries(TARGET FILES)
# TARGET is a DLL of __stdcall functions, exported without their decoration. Beside its import library this makes
# TARGET.def and, where LLVM's tool is there, TARGET.lib for Microsoft's linker and lld; FILES is set to these. And it
# replaces the import library: the linker's own names functions as the DLL exports them, but compilers ask for the
# decorated names.
function(add_import_libraries target result)
  set(raw ${CMAKE_CURRENT_BINARY_DIR}/${target}_exports.def)
  set(def ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/${target}.def)
  set(lib ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/${target}.lib)
  set(files ${def})
  # Not by -Wl, which a "," in a folder's name would end.
  target_link_options(${target} PRIVATE -Wl,--kill-at "SHELL:-Xlinker --output-def -Xlinker \"${raw}\"")
  # -k: the list has the decorated names, the DLL the plain ones.
  set(make_lib)
  if(LLVM_DLLTOOL)
    set(make_lib COMMAND ${LLVM_DLLTOOL} -m i386 -k -d ${def} -D $<TARGET_FILE_NAME:${target}> -l ${lib})
    list(APPEND files ${lib})
  endif()
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_COMMAND} -DFROM=${raw} -DTO=${def} -DDLL=$<TARGET_FILE_NAME:${target}>
      -P ${orvellogin_SOURCE_DIR}/cmake/DecoratedNames.cmake
    # From the folder itself: names of symbols inside are made of the paths given.
    COMMAND ${CMAKE_COMMAND} -E chdir ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY} ${CMAKE_DLLTOOL} -k -d ${target}.def
      -D $<TARGET_FILE_NAME:${target}> -l $<TARGET_LINKER_FILE_NAME:${target}> --temp-prefix ${target}
      --deterministic-libraries
    ${make_lib}
    BYPRODUCTS ${files}
    VERBATIM)
  set(${result} ${files} PARENT_SCOPE)
endfunction()

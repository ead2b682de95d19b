# Import libraries of a DLL of plain functions, for the linkers of other compilers too.

find_program(LLVM_DLLTOOL NAMES llvm-dlltool-14 llvm-dlltool REQUIRED)

# add_import_libraries(TARGET)
# TARGET is a DLL of __stdcall functions, exported without their decoration. Beside its import library this makes
# TARGET.lib, for Microsoft's linker and lld, and TARGET.def; and it replaces the import library, for the linker's own
# names functions as the DLL exports them, but compilers ask for the decorated names.
function(add_import_libraries target)
  set(raw ${CMAKE_CURRENT_BINARY_DIR}/${target}_exports.def)
  set(def ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/${target}.def)
  set(lib ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/${target}.lib)
  target_link_options(${target} PRIVATE -Wl,--kill-at -Wl,--output-def,${raw})
  # -k: the list has the decorated names, the DLL the plain ones.
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_COMMAND} -DFROM=${raw} -DTO=${def} -DDLL=$<TARGET_FILE_NAME:${target}>
      -P ${orvellogin_SOURCE_DIR}/cmake/DecoratedNames.cmake
    COMMAND ${LLVM_DLLTOOL} -m i386 -k -d ${def} -D $<TARGET_FILE_NAME:${target}> -l ${lib}
    COMMAND ${CMAKE_DLLTOOL} -k -d ${def} -D $<TARGET_FILE_NAME:${target}> -l $<TARGET_LINKER_FILE:${target}>
    BYPRODUCTS ${def} ${lib}
    VERBATIM)
  install(FILES ${def} ${lib} DESTINATION ${CMAKE_INSTALL_LIBDIR})
endfunction()

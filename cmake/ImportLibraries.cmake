# Import libraries of a DLL of plain functions, for the linkers of other compilers too.

find_program(LLVM_DLLTOOL NAMES llvm-dlltool-14 llvm-dlltool REQUIRED)

# add_import_libraries(TARGET)
# From what TARGET, a DLL of __stdcall functions linked with --kill-at, exports: TARGET.def, TARGET.lib for Microsoft's
# linker and lld, libTARGET.dll.a for GNU ld, all in the folder of archives. The linker's own import library is of no
# use: in it the names lack what a compiler puts behind them. Defines the custom target TARGET_import.
function(add_import_libraries target)
  set(folder ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY})
  set(raw ${CMAKE_CURRENT_BINARY_DIR}/${target}.def)
  target_link_options(${target} PRIVATE -Wl,--output-def,${raw})
  # In the list the name of each export with what a compiler puts behind it: -k takes it off for the DLL's half.
  set(files ${folder}/${target}.def ${folder}/${target}.lib ${folder}/lib${target}.dll.a)
  list(GET files 0 def)
  list(GET files 1 lib)
  list(GET files 2 archive)
  add_custom_command(
    OUTPUT ${files}
    COMMAND ${CMAKE_COMMAND} -DFROM=${raw} -DTO=${def} -DDLL=${target}.dll -P ${orvellogin_SOURCE_DIR}/cmake/DecoratedNames.cmake
    COMMAND ${LLVM_DLLTOOL} -m i386 -k -d ${def} -D ${target}.dll -l ${lib}
    COMMAND ${CMAKE_DLLTOOL} -k -d ${def} -D ${target}.dll -l ${archive}
    DEPENDS ${target} ${orvellogin_SOURCE_DIR}/cmake/DecoratedNames.cmake
    COMMENT "Making import libraries of ${target}.dll"
    VERBATIM)
  add_custom_target(${target}_import ALL DEPENDS ${files})
  set_target_properties(${target}_import PROPERTIES IMPORT_FILES "${files}")
endfunction()

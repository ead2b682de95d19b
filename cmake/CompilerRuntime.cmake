# The compiler's runtime DLLs, stripped, beside what is built: an exception crosses from the library to its host only if
# both use the same shared libgcc and libstdc++.

set(runtime_files)
foreach(name libgcc_s_dw2-1.dll libstdc++-6.dll libwinpthread-1.dll)
  execute_process(
    COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
    OUTPUT_VARIABLE source OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(file ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name})
  add_custom_command(
    OUTPUT ${file}
    COMMAND ${CMAKE_STRIP} --strip-unneeded -o ${file} ${source}
    DEPENDS ${source}
    COMMENT "Stripping ${name}"
    VERBATIM)
  list(APPEND runtime_files ${file})
endforeach()
add_custom_target(compiler_runtime ALL DEPENDS ${runtime_files})

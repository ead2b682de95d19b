# Copies the compiler's runtime DLLs, stripped, beside the binaries: exceptions can cross from the library to its host only
# if both use the same shared libgcc and libstdc++.

set(unwinder_x86 libgcc_s_dw2-1.dll)
set(unwinder_x64 libgcc_s_seh-1.dll)
set(compiler_runtime ${unwinder_${orvellogin_architecture}} libstdc++-6.dll libwinpthread-1.dll)
set(runtime_files)
foreach(name IN LISTS compiler_runtime)
  execute_process(
    COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
    OUTPUT_VARIABLE source OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(file ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name})
  add_custom_command(
    OUTPUT ${file}
    COMMAND ${CMAKE_STRIP} --preserve-dates --strip-unneeded -o ${file} ${source}
    DEPENDS ${source}
    COMMENT "Stripping ${name}"
    VERBATIM)
  list(APPEND runtime_files ${file})
endforeach()
add_custom_target(orvellogin_runtime DEPENDS ${runtime_files})

# The same list for C++ tests: #include "compiler_runtime.h".
list(JOIN compiler_runtime "\", \"" names)
file(CONFIGURE OUTPUT ${orvellogin_BINARY_DIR}/generated/compiler_runtime.h CONTENT [[
#pragma once

/// The compiler's runtime DLLs, which must lie beside orvellogin.dll.
constexpr const char* compilerRuntime[] = {"@names@"};
]] @ONLY)
add_library(orvellogin_runtime_names INTERFACE)
target_include_directories(orvellogin_runtime_names INTERFACE ${orvellogin_BINARY_DIR}/generated)

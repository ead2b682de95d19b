# Builds programs for Microsoft's ABI without Microsoft's tools: with clang-cl and lld, libc++'s headers and Wine's C library.
# -DHOSTS=... names the folder that script/hosts/build made, -DBITS=... is 32 or 64.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86)
set(processor i686)
if(BITS EQUAL 64)
  set(CMAKE_SYSTEM_PROCESSOR AMD64)
  set(processor x86_64)
endif()
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES HOSTS BITS)

# The folder of Debian's default LLVM has all of its tools, under names without a version.
file(REAL_PATH /usr/bin/clang clang)
cmake_path(GET clang PARENT_PATH llvm)
set(CMAKE_LINKER ${llvm}/lld-link)
set(CMAKE_RC_COMPILER ${llvm}/llvm-rc)
set(CMAKE_MT ${llvm}/llvm-mt)

# libc++'s headers must come before those of the compiler, which would otherwise be first.
execute_process(COMMAND ${clang} -print-resource-dir OUTPUT_VARIABLE builtin OUTPUT_STRIP_TRAILING_WHITESPACE)
set(common "-nobuiltininc --target=${processor}-pc-windows-msvc -fms-compatibility-version=19.20 /GS- /Zl /W4 /WX")
set(CMAKE_C_FLAGS_INIT "${common}")
set(CMAKE_CXX_FLAGS_INIT "${common} /EHsc -D_LIBCPP_NO_VCRUNTIME -D_LIBCPP_NO_AUTO_LINK -D_LIBCPP_DISABLE_EXTERN_TEMPLATE \
-D_LIBCPP_DISABLE_VISIBILITY_ANNOTATIONS")
# Not among the flags, which CMake splits at each space when it identifies the compiler.
set(CMAKE_C_STANDARD_INCLUDE_DIRECTORIES
  ${CMAKE_CURRENT_LIST_DIR}/include ${builtin}/include ${HOSTS}/wine/include/msvcrt ${HOSTS}/wine/include/windows)
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES ${llvm}/../include/c++/v1 ${CMAKE_C_STANDARD_INCLUDE_DIRECTORIES})
set(CMAKE_MSVC_RUNTIME_LIBRARY "")
set(CMAKE_EXE_LINKER_FLAGS_INIT "/entry:mainCRTStartup /safeseh:no")
foreach(language C CXX)
  set(CMAKE_${language}_COMPILER ${llvm}/clang-cl)
  # ccache, which the environment may ask for, does not understand these options.
  unset(ENV{CMAKE_${language}_COMPILER_LAUNCHER})
  set(CMAKE_${language}_STANDARD_LIBRARIES
    "\"${HOSTS}/wine/lib/libvcruntime140.a\" \"${HOSTS}/wine/lib/libucrtbase.a\" \"${HOSTS}/wine/lib/libkernel32.a\"" CACHE STRING "")
endforeach()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)

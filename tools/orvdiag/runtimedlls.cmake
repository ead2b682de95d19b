# cmake -DOUTPUT=header -DFILES=file;... -P: writes a header with the names and sizes of the runtime DLLs that ship.
set(rows)
foreach(file IN LISTS FILES)
  file(SIZE ${file} size)
  cmake_path(GET file FILENAME name)
  string(APPEND rows "    {\"${name}\", ${size}},\n")
endforeach()
file(WRITE ${OUTPUT} "#pragma once\n
/// A runtime DLL of the compiler, which ships beside orvellogin.dll.
struct runtimedll {
    const char* name;
    unsigned bytes;
};
constexpr runtimedll runtimedlls[] = {\n${rows}};\n")

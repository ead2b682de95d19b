# cmake -DOUTPUT=header -DFILES=file;... -P: writes down which runtime DLLs the library ships.
set(rows)
foreach(file IN LISTS FILES)
  file(SIZE ${file} size)
  cmake_path(GET file FILENAME name)
  string(APPEND rows "    {\"${name}\", ${size}},\n")
endforeach()
file(WRITE ${OUTPUT} "#pragma once\n
/// A file of the compiler's that lies beside orvellogin.dll.
struct runtimedll {
    const char* name;
    unsigned bytes;
};
constexpr runtimedll runtimedlls[] = {\n${rows}};\n")

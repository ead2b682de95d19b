// Makes exceptions inside this DLL work in a process that has the compiler's shared unwinder loaded as well.
//
// This DLL is linked with -static and contains its own unwinder. But if libgcc_s_dw2-1.dll is loaded in the process,
// the compiler's start-up code registers the unwind tables there instead. This DLL's own unwinder then has no tables,
// and the first exception ends the process. So the tables are registered with it here.

#include <windows.h>

#include <cstdint>

extern "C" {
void __register_frame_info(const void* start, void* object);
extern IMAGE_DOS_HEADER __ImageBase;
extern const unsigned char insideUnwindTables[] __asm__("_orvellogin_inside_unwind_tables");
}

// A label inside the tables, to find their section. Its name does not help: ".eh_frame" is too long for a section
// header, and the full name is only there in an image with debug information.
__asm__(
    ".section .eh_frame, \"dr\"\n"
    "_orvellogin_inside_unwind_tables:\n"
    ".text\n");

namespace {

// Runs before the constructors of static objects, which may throw.
__attribute__((constructor(101))) void registerOwnUnwindTables() {
    if (!GetModuleHandleW(L"libgcc_s_dw2-1.dll")) {
        return;
    }
    // The unwinder's own data about one module: six words in GCC 12, with room to spare.
    static void* object[16];
    const auto base = reinterpret_cast<std::uintptr_t>(&__ImageBase);
    const auto offset = reinterpret_cast<std::uintptr_t>(insideUnwindTables) - base;
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS32*>(base + __ImageBase.e_lfanew);
    const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(headers);
    for (WORD i = 0; i < headers->FileHeader.NumberOfSections; ++i, ++section) {
        if (section->VirtualAddress <= offset && offset < section->VirtualAddress + section->Misc.VirtualSize) {
            __register_frame_info(reinterpret_cast<const void*>(base + section->VirtualAddress), object);
        }
    }
}

}  // namespace

// Exceptions inside this DLL, which contains its own unwinder, in a process where the compiler's shared one is loaded.
//
// The compiler's start-up code hands a module's unwind tables to libgcc_s_dw2-1.dll whenever that DLL is in the
// process, also those of a module that was linked with -static. This module's own unwinder then knows no tables, and
// the first exception ends the process. So it is handed them here too.

#include <windows.h>

#include <cstdint>

extern "C" {
void __register_frame_info(const void* start, void* object);
extern IMAGE_DOS_HEADER __ImageBase;
extern const unsigned char insideUnwindTables[] __asm__("_orvellogin_inside_unwind_tables");
}

// A place in the tables, which tells their section from the others: debug information decides whether the image has its
// whole name.
__asm__(
    ".section .eh_frame, \"dr\"\n"
    "_orvellogin_inside_unwind_tables:\n"
    ".text\n");

namespace {

// Before the constructors of static objects, which may throw.
__attribute__((constructor(101))) void registerOwnUnwindTables() {
    if (!GetModuleHandleW(L"libgcc_s_dw2-1.dll")) {
        return;
    }
    // The unwinder's book-keeping for one module: six words as it stands, with room to spare.
    static void* object[16];
    const auto base = reinterpret_cast<std::uintptr_t>(&__ImageBase);
    const auto place = reinterpret_cast<std::uintptr_t>(insideUnwindTables) - base;
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS32*>(base + __ImageBase.e_lfanew);
    const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(headers);
    for (WORD i = 0; i < headers->FileHeader.NumberOfSections; ++i, ++section) {
        if (section->VirtualAddress <= place && place < section->VirtualAddress + section->Misc.VirtualSize) {
            __register_frame_info(reinterpret_cast<const void*>(base + section->VirtualAddress), object);
        }
    }
}

}  // namespace

// A DLL that ends the process as soon as it is loaded.

#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD, LPVOID) {
    ExitProcess(0);
}

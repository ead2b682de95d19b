// A stand-in for the .NET Framework's mscoree.dll: the test that loads it provides its one function.

#include <windows.h>

extern "C" {
__declspec(dllexport) HRESULT(STDAPICALLTYPE* createInstance)(REFCLSID, REFIID, void**);

__declspec(dllexport) HRESULT STDAPICALLTYPE CLRCreateInstance(REFCLSID clsid, REFIID iid, void** created) {
    return createInstance(clsid, iid, created);
}
}

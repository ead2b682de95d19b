// Replaces Wine's header, which conflicts with clang's intrinsics. Declares only what the examples call.
#pragma once
#ifdef __cplusplus
extern "C" {
#endif
#define CP_UTF8 65001
__declspec(dllimport) unsigned long __stdcall GetCurrentThreadId(void);
__declspec(dllimport) int __stdcall SetConsoleOutputCP(unsigned int);
__declspec(dllimport) int __stdcall WideCharToMultiByte(unsigned int, unsigned long, const wchar_t*, int, char*, int,
                                                        const char*, int*);
#ifdef __cplusplus
}
#endif

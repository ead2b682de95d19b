#pragma once

#include <cstddef>  // any standard header defines the macros that identify the standard library

/// @file
/// Import of the exported class into a host.

/// Marks what orvellogin.dll exports. Empty in the library's own build (ORVELLOGIN_BUILD): there orvellogin.def lists
/// the exports, so that the linker reports a name that is missing. Empty also in a host of the header-only class
/// (ORVELLOGIN_HEADER_ONLY), which compiles the types itself.
#if defined(ORVELLOGIN_BUILD) || defined(ORVELLOGIN_HEADER_ONLY)
#define ORVELLOGIN_API
#elif !defined(__MINGW32__) || !(defined(__i386__) || defined(__x86_64__)) || defined(__USING_SJLJ_EXCEPTIONS__) || \
    !defined(_GLIBCXX_USE_CXX11_ABI) || !_GLIBCXX_USE_CXX11_ABI
#error \
    "orvellogin.dll's class is only for mingw-w64's g++, with dw2 or SEH exceptions and the new std::wstring. \
Use the header-only class, which has the same name: link orvellogin::client, or put the folder include/client before include."
#else
#define ORVELLOGIN_API __declspec(dllimport)
#endif

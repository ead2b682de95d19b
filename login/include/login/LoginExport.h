#pragma once

#include <cstddef>  // the standard library says which it is

/// Marks what orvellogin.dll exports. The library's own build defines ORVELLOGIN_BUILD; ORVELLOGIN_STATIC is for code
/// that contains the class.
#if defined(ORVELLOGIN_STATIC)
#define ORVELLOGIN_API
#elif !defined(__MINGW32__) || !defined(__i386__) || defined(__USING_SJLJ_EXCEPTIONS__) || \
    !defined(_GLIBCXX_USE_CXX11_ABI) || !_GLIBCXX_USE_CXX11_ABI
#error \
    "orvellogin.dll's class is for mingw-w64's g++ for i686 alone, with dw2 exceptions and the new std::wstring. \
Use the header-only class, which has the same name: link orvellogin::client, or put the folder include/client before include."
#elif defined(ORVELLOGIN_BUILD)
#define ORVELLOGIN_API __declspec(dllexport)
#else
#define ORVELLOGIN_API __declspec(dllimport)
#endif

#pragma once

#include <cstddef>  // the standard library says which it is

/// @file
/// How the names of the exported class reach a host.

/// Marks what orvellogin.dll exports. Nothing in the library's own build, which defines ORVELLOGIN_BUILD: there the
/// list in orvellogin.def decides, so that the linker finds a name that is missing. Nothing either in a host of the
/// header-only class, which defines ORVELLOGIN_HEADER_ONLY: the types are that host's own.
#if defined(ORVELLOGIN_BUILD) || defined(ORVELLOGIN_HEADER_ONLY)
#define ORVELLOGIN_API
#elif !defined(__MINGW32__) || !defined(__i386__) || defined(__USING_SJLJ_EXCEPTIONS__) || \
    !defined(_GLIBCXX_USE_CXX11_ABI) || !_GLIBCXX_USE_CXX11_ABI
#error \
    "orvellogin.dll's class is for mingw-w64's g++ for i686 alone, with dw2 exceptions and the new std::wstring. \
Use the header-only class, which has the same name: link orvellogin::client, or put the folder include/client before include."
#else
#define ORVELLOGIN_API __declspec(dllimport)
#endif

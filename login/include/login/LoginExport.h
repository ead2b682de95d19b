#pragma once

#include <cstddef>  // any standard header defines the macros that identify the standard library

/// @file
/// Which of the two classes a host gets: the exported one, or the header-only one.

/// Defined by a host that wants the header-only class, in all of its sources (the CMake target orvellogin::client and
/// orvellogin-client.pc do so). Defined here for compilers that cannot import the exported class, which is only for
/// mingw-w64's g++, with dw2 or SEH exceptions and the new std::wstring.
#if !defined(ORVELLOGIN_BUILD) && !defined(ORVELLOGIN_HEADER_ONLY) &&                                              \
    (!defined(__MINGW32__) || !(defined(__i386__) || defined(__x86_64__)) || defined(__USING_SJLJ_EXCEPTIONS__) || \
     !defined(_GLIBCXX_USE_CXX11_ABI) || !_GLIBCXX_USE_CXX11_ABI)
#define ORVELLOGIN_HEADER_ONLY
#endif

/// Marks what orvellogin.dll exports. Empty in the library's own build (ORVELLOGIN_BUILD): there orvellogin.def lists
/// the exports, so that the linker reports a name that is missing.
#if defined(ORVELLOGIN_BUILD) || defined(ORVELLOGIN_HEADER_ONLY)
#define ORVELLOGIN_API
#else
#define ORVELLOGIN_API __declspec(dllimport)
#endif

// Sources that use different classes must not be linked together, because the classes have the same name and different
// fields. So each source defines a symbol, and the linker refuses two different values. The assembler does it instead
// if link-time optimisation puts both sources into one file. Not an inline namespace, with which hosts could not
// declare `class LoginManagerClient;` themselves.
#if defined(__MINGW32__) && (defined(__i386__) || defined(__x86_64__)) && !defined(ORVELLOGIN_BUILD)
#ifdef ORVELLOGIN_HEADER_ONLY
#define ORVELLOGIN_CLASS "2"
#else
#define ORVELLOGIN_CLASS "1"
#endif
#define ORVELLOGIN_SYMBOL "orvellogin_exported_and_header_only_class_in_one_program"
__asm__(".ifndef " ORVELLOGIN_SYMBOL "\n.globl " ORVELLOGIN_SYMBOL "\n.set " ORVELLOGIN_SYMBOL ", " ORVELLOGIN_CLASS
        "\n.elseif " ORVELLOGIN_SYMBOL " - " ORVELLOGIN_CLASS "\n.error \"" ORVELLOGIN_SYMBOL "\"\n.endif");
#undef ORVELLOGIN_CLASS
#undef ORVELLOGIN_SYMBOL
#endif

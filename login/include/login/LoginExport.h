#pragma once

/// @file
/// How the names of the exported class reach a host.

/// Marks what orvellogin.dll exports. Nothing in the library's own build, which defines ORVELLOGIN_BUILD: there the
/// list in orvellogin.def decides, so that the linker finds a name that is missing.
#ifdef ORVELLOGIN_BUILD
#define ORVELLOGIN_API
#else
#define ORVELLOGIN_API __declspec(dllimport)
#endif

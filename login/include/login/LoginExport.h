#pragma once

/// Marks what orvellogin.dll exports. The library's own build defines ORVELLOGIN_BUILD.
#ifdef ORVELLOGIN_BUILD
#define ORVELLOGIN_API __declspec(dllexport)
#else
#define ORVELLOGIN_API __declspec(dllimport)
#endif

#pragma once

/// The include folder `client` comes first, so this file replaces the header of the same name that imports from
/// orvellogin.dll.
#define ORVELLOGIN_API
#define ORVELLOGIN_HEADER_ONLY

#pragma once

/// Found before the header of the same name for the class that orvellogin.dll exports.
#define ORVELLOGIN_API
#define ORVELLOGIN_HEADER_ONLY

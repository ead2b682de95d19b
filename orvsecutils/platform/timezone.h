#pragma once

#include <windows.h>

#include <cstdint>

#include "orvsecutils/platform/walltime.h"

namespace orvsecutils {

/// File times count 100-nanosecond ticks.
constexpr std::int64_t ticksperminute = 60 * 10'000'000LL;

/// Minutes that local time is ahead of UTC at a moment, which is given in file-time ticks of UTC. `zone` null stands
/// for the system's. 0 for a moment that it cannot tell.
int utcoffset(std::int64_t ticks, const TIME_ZONE_INFORMATION* zone);

/// That moment on a clock that is `offset` minutes ahead of UTC.
walltime atoffset(std::int64_t ticks, int offset);

}  // namespace orvsecutils

#pragma once

#include <cstdint>

namespace OrvelLoginClientCLR {

/// A callback of the host, with the context that it is called with. May be null. __stdcall as in orvelloginc.h.
struct Callback {
    void(__stdcall* function)(void* context) = nullptr;
    void* context = nullptr;
};

/// A client's pair of callbacks. `owner` tells which client may withdraw the pair; 0 for none.
struct Callbacks {
    Callback login;
    Callback logout;
    std::uint64_t owner = 0;
};

/// Makes events of all managers go to `callbacks`, and remembers the calling thread's floating-point control, with
/// which they are called on threads that have none of the host's. All in one step, so that clients that do this at the
/// same time leave the pair of one of them.
void setCallbacks(const Callbacks& callbacks);

/// If the pair that is called is that of `owner`, nobody is called from now on. Returns after those of `owner`'s
/// callbacks that are running on other threads.
void withdrawCallbacks(std::uint64_t owner);

/// The manager's event handlers, called on whatever thread it raises the events. Each calls the callback that is
/// currently in its slot.
void LoginEventHandler() noexcept;
void LogoutEventHandler() noexcept;

}  // namespace OrvelLoginClientCLR

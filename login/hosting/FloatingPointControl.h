#pragma once

#include <cstdint>

namespace OrvelLoginClientCLR {

/// Precision, rounding and exception masks of the calling thread, for x87 and for SSE.
struct FloatingPointControl {
    std::uint16_t x87;
    std::uint32_t sse;

    /// Reads the calling thread's control.
    static FloatingPointControl current() noexcept;

    /// Sets the calling thread's control.
    void apply() const noexcept;
};

/// For the time that the calling thread runs managed code: sets the floating-point control that the runtime expects,
/// and restores the host's at the end.
///
/// Hosts differ: C++ compilers compute with 64 or 53 bits, and Delphi unmasks floating-point exceptions, which crash
/// managed code. Also, the runtime may change the control of a thread that enters it for the first time.
class ManagedCodeScope {
public:
    ManagedCodeScope() noexcept;
    ~ManagedCodeScope();
    ManagedCodeScope(const ManagedCodeScope&) = delete;
    ManagedCodeScope& operator=(const ManagedCodeScope&) = delete;

private:
    const FloatingPointControl host;
};

/// For the time that managed code calls a callback of the host: sets the control with which this thread last entered
/// managed code, or `fallback` on a thread of the runtime's own, and restores the runtime's at the end.
class HostCodeScope {
public:
    explicit HostCodeScope(const FloatingPointControl& fallback) noexcept;
    ~HostCodeScope();
    HostCodeScope(const HostCodeScope&) = delete;
    HostCodeScope& operator=(const HostCodeScope&) = delete;

private:
    const FloatingPointControl managed;
};

}  // namespace OrvelLoginClientCLR

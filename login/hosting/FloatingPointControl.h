#pragma once

#include <cstdint>

namespace OrvelLoginClientCLR {

/// The x87 control word and MXCSR: precision, rounding and exception masks.
struct FloatingPointControl {
    std::uint16_t x87;
    std::uint32_t sse;

    /// Reads those of the calling thread.
    static FloatingPointControl current() noexcept;

    /// Sets those of the calling thread.
    void apply() const noexcept;
};

/// For the time that the calling thread runs managed code: sets the control words that the runtime expects, and
/// restores those of the host at the end.
///
/// Hosts differ: C++ compilers compute with 64 or 53 bits, and Delphi unmasks floating-point exceptions, which crash
/// managed code. Also, the runtime may change the control words of a thread that enters it for the first time, and that
/// of x87 even in a 64-bit process, where it does not compute with it.
class ManagedCodeScope {
public:
    ManagedCodeScope() noexcept;
    ~ManagedCodeScope();
    ManagedCodeScope(const ManagedCodeScope&) = delete;
    ManagedCodeScope& operator=(const ManagedCodeScope&) = delete;

private:
    const FloatingPointControl host;
};

/// For the time that managed code calls a callback of the host: sets the control words with which this thread last
/// entered managed code, or `fallback` on a thread that the runtime created, and restores those of the runtime at the
/// end. Then the next callback gets the same, whatever members this one called with others.
class HostCodeScope {
public:
    explicit HostCodeScope(const FloatingPointControl& fallback) noexcept;
    ~HostCodeScope();
    HostCodeScope(const HostCodeScope&) = delete;
    HostCodeScope& operator=(const HostCodeScope&) = delete;

private:
    const FloatingPointControl managed;
    void* const entered;
};

}  // namespace OrvelLoginClientCLR

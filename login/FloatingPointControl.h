#pragma once

#include <cstdint>

namespace OrvelLoginClientCLR {

/// Precision, rounding and exception masks of the calling thread, for x87 and for SSE.
struct FloatingPointControl {
    std::uint16_t x87;
    std::uint32_t sse;

    /// What the calling thread has now.
    static FloatingPointControl current() noexcept;

    /// Gives it to the calling thread.
    void apply() const noexcept;
};

/// While it lives, the calling thread runs managed code: with the floating-point control that the runtime expects,
/// whatever the host uses. Restores the host's at the end.
///
/// Hosts differ: C++ compilers compute with 64 or 53 bits, Delphi leaves exceptions unmasked, which managed code does
/// not survive. And the runtime may change the control of a thread that enters it for the first time.
class ManagedCodeScope {
public:
    ManagedCodeScope() noexcept;
    ~ManagedCodeScope();
    ManagedCodeScope(const ManagedCodeScope&) = delete;
    ManagedCodeScope& operator=(const ManagedCodeScope&) = delete;

private:
    const FloatingPointControl host;
};

/// While it lives, a thread that came from managed code runs the host's callback, with the host's control: the one with
/// which this thread last entered managed code, or `otherwise` on a thread of the runtime's own. Restores the
/// runtime's.
class HostCodeScope {
public:
    explicit HostCodeScope(const FloatingPointControl& otherwise) noexcept;
    ~HostCodeScope();
    HostCodeScope(const HostCodeScope&) = delete;
    HostCodeScope& operator=(const HostCodeScope&) = delete;

private:
    const FloatingPointControl managed;
};

}  // namespace OrvelLoginClientCLR

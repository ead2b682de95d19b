#include "login/hosting/FloatingPointControl.h"

#include <windows.h>

namespace OrvelLoginClientCLR {

namespace {

// What the runtime expects: 53 bits of precision, round to nearest, all exceptions masked. Windows gives it to every
// new thread.
constexpr FloatingPointControl runtimes = {0x027F, 0x1F80};

constexpr std::uint16_t x87Masks = 0x003F;
constexpr std::uint32_t sseFlags = 0x003F;  // status flags of earlier operations, not control

// The control with which each thread last entered managed code; 0 if it never did. The value fits into the TLS slot
// itself, so there is nothing to free when a thread ends. Not thread_local, which this compiler emulates at several
// times the cost.
class HostControls {
public:
    HostControls() noexcept : slot(TlsAlloc()) {}
    ~HostControls() { TlsFree(slot); }
    HostControls(const HostControls&) = delete;
    HostControls& operator=(const HostControls&) = delete;

    void keep(const FloatingPointControl& control) const noexcept {
        TlsSetValue(slot, reinterpret_cast<void*>((control.sse & ~sseFlags) << 16 | control.x87));
    }
    FloatingPointControl ofThisThread(const FloatingPointControl& fallback) const noexcept {
        const auto kept = reinterpret_cast<std::uintptr_t>(TlsGetValue(slot));
        return kept ? FloatingPointControl{static_cast<std::uint16_t>(kept), kept >> 16} : fallback;
    }

private:
    const DWORD slot;
};

const HostControls hostControls;

}  // namespace

FloatingPointControl FloatingPointControl::current() noexcept {
    FloatingPointControl control;
    __asm__ volatile("fnstcw %0\n\tstmxcsr %1" : "=m"(control.x87), "=m"(control.sse));
    return control;
}

void FloatingPointControl::apply() const noexcept {
    // A pending flag that managed code left would raise its exception as soon as it is unmasked.
    if ((x87 & x87Masks) != x87Masks) {
        __asm__ volatile("fnclex");
    }
    __asm__ volatile("fldcw %0\n\tldmxcsr %1" : : "m"(x87), "m"(sse));
}

ManagedCodeScope::ManagedCodeScope() noexcept : host(FloatingPointControl::current()) {
    hostControls.keep(host);
    runtimes.apply();
}

ManagedCodeScope::~ManagedCodeScope() {
    host.apply();
}

HostCodeScope::HostCodeScope(const FloatingPointControl& fallback) noexcept : managed(FloatingPointControl::current()) {
    hostControls.ofThisThread(fallback).apply();
}

HostCodeScope::~HostCodeScope() {
    managed.apply();
}

}  // namespace OrvelLoginClientCLR

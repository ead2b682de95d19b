#include "login/hosting/FloatingPointControl.h"

#include <windows.h>

namespace OrvelLoginClientCLR {

namespace {

// What the runtime expects: 53 bits of precision, round to nearest, all exceptions masked. Windows gives it to every
// new thread.
constexpr FloatingPointControl runtimeControl = {0x027F, 0x1F80};

constexpr std::uint16_t x87Masks = 0x003F;
constexpr std::uint32_t sseFlags = 0x003F;  // status flags of earlier operations, not control

// The control words with which each thread last entered managed code; null if it never did. They fit into the TLS slot
// itself, so there is nothing to free when a thread ends. Not thread_local, which this compiler emulates at several
// times the cost.
class HostControls {
public:
    HostControls() noexcept : slot(TlsAlloc()) {}
    ~HostControls() { TlsFree(slot); }
    HostControls(const HostControls&) = delete;
    HostControls& operator=(const HostControls&) = delete;

    void keep(const FloatingPointControl& control) const noexcept {
        const std::uintptr_t bits = (control.sse & ~sseFlags) << 16 | control.x87;
        TlsSetValue(slot, reinterpret_cast<void*>(bits));
    }
    void* kept() const noexcept { return TlsGetValue(slot); }
    void restore(void* keptBefore) const noexcept { TlsSetValue(slot, keptBefore); }

    static FloatingPointControl unpacked(void* kept, const FloatingPointControl& fallback) noexcept {
        const auto bits = reinterpret_cast<std::uintptr_t>(kept);
        return kept ? FloatingPointControl{static_cast<std::uint16_t>(bits), static_cast<std::uint32_t>(bits >> 16)}
                    : fallback;
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
    runtimeControl.apply();
}

ManagedCodeScope::~ManagedCodeScope() {
    host.apply();
}

HostCodeScope::HostCodeScope(const FloatingPointControl& fallback) noexcept
    : managed(FloatingPointControl::current()), entered(hostControls.kept()) {
    HostControls::unpacked(entered, fallback).apply();
}

HostCodeScope::~HostCodeScope() {
    hostControls.restore(entered);
    managed.apply();
}

}  // namespace OrvelLoginClientCLR

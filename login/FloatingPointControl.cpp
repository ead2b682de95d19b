#include "login/FloatingPointControl.h"

#include <windows.h>

namespace OrvelLoginClientCLR {

namespace {

// The runtime's own: 53 bits of precision, to nearest, nothing raises; what Windows gives a new thread.
constexpr FloatingPointControl runtimes = {0x027F, 0x1F80};

constexpr std::uint16_t x87Masks = 0x003F;

// The innermost ManagedCodeScope of each thread. Not thread_local: the compiler emulates that, at several times the
// cost.
class ThreadSlot {
public:
    ThreadSlot() noexcept : index(TlsAlloc()) {}
    ~ThreadSlot() { TlsFree(index); }
    ThreadSlot(const ThreadSlot&) = delete;
    ThreadSlot& operator=(const ThreadSlot&) = delete;

    void* get() const noexcept { return TlsGetValue(index); }
    void set(void* value) const noexcept { TlsSetValue(index, value); }

private:
    const DWORD index;  // without one, get() gives null: a callback then sees the control of the last bridge's maker
};

const ThreadSlot innermost;

}  // namespace

FloatingPointControl FloatingPointControl::current() noexcept {
    FloatingPointControl control;
    __asm__ volatile("fnstcw %0\n\tstmxcsr %1" : "=m"(control.x87), "=m"(control.sse));
    return control;
}

void FloatingPointControl::apply() const noexcept {
    const FloatingPointControl now = current();
    if (now.x87 != x87) {
        // Flags that managed code left would raise the moment that they are unmasked.
        if ((x87 & x87Masks) != x87Masks) {
            __asm__ volatile("fnclex");
        }
        __asm__ volatile("fldcw %0" : : "m"(x87));
    }
    if (now.sse != sse) {
        __asm__ volatile("ldmxcsr %0" : : "m"(sse));
    }
}

ManagedCodeScope::ManagedCodeScope() noexcept : host(FloatingPointControl::current()), outer(innermost.get()) {
    innermost.set(this);
    runtimes.apply();
}

ManagedCodeScope::~ManagedCodeScope() {
    host.apply();
    innermost.set(outer);
}

HostCodeScope::HostCodeScope(const FloatingPointControl& otherwise) noexcept
    : managed(FloatingPointControl::current()) {
    const auto* member = static_cast<const ManagedCodeScope*>(innermost.get());
    (member ? member->host : otherwise).apply();
}

HostCodeScope::~HostCodeScope() {
    managed.apply();
}

}  // namespace OrvelLoginClientCLR

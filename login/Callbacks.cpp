#include "login/Callbacks.h"

#include <windows.h>

#include <condition_variable>
#include <mutex>

#include "login/hosting/ClrRuntime.h"
#include "login/hosting/FloatingPointControl.h"

namespace OrvelLoginClientCLR {

namespace {

// A callback that is running. On the stack of its event.
struct Running {
    std::uint64_t owner;
    DWORD thread;
    Running* next;
};

// The process-wide slots. The mutex is never held while a callback runs.
struct Slots {
    std::mutex guard;
    std::condition_variable returned;
    Callbacks callbacks;
    FloatingPointControl hostControl = FloatingPointControl::current();
    Running* running = nullptr;
};

// Never destroyed, because events may arrive until the process is gone.
Slots& slots() {
    static Slots& all = *new Slots;
    return all;
}

void remove(Running& ended, Running*& list) {
    Running** link = &list;
    while (*link != &ended) {
        link = &(*link)->next;
    }
    *link = ended.next;
}

void raise(Callback Callbacks::* event) noexcept {
    // The host's own code and data may be gone by then.
    if (processIsEnding()) {
        return;
    }
    Slots& all = slots();
    std::unique_lock<std::mutex> lock(all.guard);
    const Callback callback = all.callbacks.*event;
    if (!callback.function) {
        return;
    }
    const FloatingPointControl control = all.hostControl;
    Running self = {all.callbacks.owner, GetCurrentThreadId(), all.running};
    all.running = &self;
    lock.unlock();
    {
        const HostCodeScope host(control);
        callback.function(callback.context);
    }
    lock.lock();
    remove(self, all.running);
    lock.unlock();
    all.returned.notify_all();
}

}  // namespace

void setCallbacks(const Callbacks& callbacks) {
    Slots& all = slots();
    const FloatingPointControl control = FloatingPointControl::current();
    const std::lock_guard<std::mutex> lock(all.guard);
    all.callbacks = callbacks;
    all.hostControl = control;
}

void withdrawCallbacks(std::uint64_t owner) {
    // The system has ended all other threads, and one of them may have held the mutex.
    if (processIsEnding()) {
        return;
    }
    Slots& all = slots();
    std::unique_lock<std::mutex> lock(all.guard);
    if (all.callbacks.owner == owner) {
        all.callbacks = Callbacks();
    }
    all.returned.wait(lock, [&] {
        for (const Running* each = all.running; each; each = each->next) {
            if (each->owner == owner && each->thread != GetCurrentThreadId()) {
                return false;
            }
        }
        return true;
    });
}

void LoginEventHandler() noexcept {
    raise(&Callbacks::login);
}

void LogoutEventHandler() noexcept {
    raise(&Callbacks::logout);
}

}  // namespace OrvelLoginClientCLR

#pragma once

/// One way into the library: the calls that are measured, each made so many times.
struct Way {
    void (*getAccessToken)(int calls);
    void (*formatAccessUrl)(int calls);
    void (*isExpired)(int calls);
    void (*record)(int calls);
    void (*refused)(int calls);
};

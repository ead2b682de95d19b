#pragma once

/// One way to call the library: the functions to measure, each of which repeats its call `calls` times.
struct Candidate {
    void (*getAccessToken)(int calls);
    void (*formatAccessUrl)(int calls);
    void (*isExpired)(int calls);
    void (*record)(int calls);
    void (*refused)(int calls);
};

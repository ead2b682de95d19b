/* In front of Wine's. */
#pragma once
#include_next <time.h>
struct timespec {
    time_t tv_sec;
    long tv_nsec;
};

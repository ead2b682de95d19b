/* Found before Wine's header: adds timespec, which libc++ needs. */
#pragma once
#include_next <time.h>
struct timespec {
    time_t tv_sec;
    long tv_nsec;
};

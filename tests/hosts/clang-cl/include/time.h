// Found before Wine's header: adds timespec, which libc++ needs and which only later versions of Wine have.
#pragma once
#define timespec timespec_of_wine
#include_next <time.h>
#undef timespec
struct timespec {
    time_t tv_sec;
    long tv_nsec;
};

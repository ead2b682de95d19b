// The parts of the start-up code and of libc++'s library that a program for Microsoft's ABI needs, because Debian has
// neither. Wine's C library provides the rest. Compiled without RTTI, because this file defines type_info.

#include <stdlib.h>

#include <exception>
#include <new>
#include <stdexcept>
#include <string>

class type_info {
public:
    virtual ~type_info();
};
type_info::~type_info() = default;
// Makes the compiler emit the virtual table of type_info, to which the RTTI data of every type refers.
type_info instance;

void* operator new(std::size_t size) {
    return malloc(size);
}
void* operator new(std::size_t size, std::align_val_t) {
    return malloc(size);
}
void operator delete(void* block) noexcept {
    free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    free(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    free(block);
}

namespace std {

exception::~exception() noexcept = default;
const char* exception::what() const noexcept {
    return "Unknown exception";
}
bad_alloc::bad_alloc() noexcept = default;
bad_alloc::~bad_alloc() noexcept = default;
const char* bad_alloc::what() const noexcept {
    return "std::bad_alloc";
}
bad_array_new_length::bad_array_new_length() noexcept = default;
bad_array_new_length::~bad_array_new_length() noexcept = default;
const char* bad_array_new_length::what() const noexcept {
    return "bad_array_new_length";
}
// Only used with literals, so the text need not be copied.
__libcpp_refstring::__libcpp_refstring(const char* text) : __imp_(text) {}
__libcpp_refstring::__libcpp_refstring(const __libcpp_refstring&) noexcept = default;
__libcpp_refstring::~__libcpp_refstring() = default;
logic_error::logic_error(const char* text) : __imp_(text) {}
logic_error::logic_error(const logic_error&) noexcept = default;
logic_error::~logic_error() noexcept = default;
const char* logic_error::what() const noexcept {
    return "logic_error";
}
length_error::~length_error() noexcept = default;
out_of_range::~out_of_range() noexcept = default;
template class basic_string<char>;
template class basic_string<wchar_t>;

}  // namespace std

// Wine's header declares atexit as imported.
#pragma clang diagnostic ignored "-Winconsistent-dllimport"
extern "C" {
int _fltused = 1;
int main();
int _crt_atexit(void (*function)());
int _initterm(void (**first)(), void (**last)());

int atexit(void (*function)()) {
    return _crt_atexit(function);
}

// The constructors of static objects lie between these two.
#pragma section(".CRT$XCA", read)
#pragma section(".CRT$XCZ", read)
__declspec(allocate(".CRT$XCA")) void (*firstConstructor)() = nullptr;
__declspec(allocate(".CRT$XCZ")) void (*lastConstructor)() = nullptr;

void mainCRTStartup() {
    _initterm(&firstConstructor, &lastConstructor);
    exit(main());
}
}

#pragma once

#include <windows.h>

#include <string>
#include <vector>

/// A text that is wiped from memory by its destructor. It cannot be copied, so that no copy is forgotten; moving passes
/// the same memory on.
class Secret {
public:
    Secret() = default;
    /// Room for `length` units and the terminator, all zero.
    explicit Secret(std::size_t length) : units(length + 1) {}
    Secret(Secret&&) = default;
    Secret& operator=(Secret&&) = delete;
    ~Secret() { SecureZeroMemory(units.data(), units.size() * sizeof(wchar_t)); }

    wchar_t* data() { return units.data(); }
    const wchar_t* c_str() const { return units.data(); }
    int capacity() const { return static_cast<int>(units.size()); }

private:
    std::vector<wchar_t> units;
};

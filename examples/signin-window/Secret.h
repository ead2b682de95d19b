#pragma once

#include <windows.h>

#include <string>
#include <vector>

/// A text that is wiped from memory when it is no longer needed. Moving hands the same memory on; copying is not
/// possible, so that no copy is forgotten.
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

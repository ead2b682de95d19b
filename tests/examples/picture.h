#pragma once

#include <windows.h>

#include <string>
#include <vector>

/// What the screen shows of a window.
class Picture {
public:
    explicit Picture(HWND window);
    bool operator==(const Picture& other) const { return pixels == other.pixels; }

    /// Whether anything is drawn within a control, apart from its edge.
    bool inked(HWND control) const;

    /// Writes it as a PNG file.
    bool save(const std::wstring& file) const;

private:
    RECT area;
    int width, height;
    std::vector<unsigned> pixels;  // from the top, 0x00RRGGBB
};

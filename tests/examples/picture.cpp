#include "picture.h"

#include <objidl.h>

// After objidl.h, which it needs.
#include <gdiplus.h>

#include <algorithm>

Picture::Picture(HWND window) {
    GetWindowRect(window, &area);
    width = area.right - area.left;
    height = area.bottom - area.top;
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    const HDC screen = GetDC(nullptr);
    const HDC memory = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateDIBSection(screen, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ before = SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, width, height, screen, area.left, area.top, SRCCOPY);
    GdiFlush();
    const auto* first = static_cast<const unsigned*>(bits);
    pixels.assign(first, first + width * height);
    for (unsigned& pixel : pixels) {
        pixel &= 0xffffff;
    }
    SelectObject(memory, before);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
}

bool Picture::inked(HWND control) const {
    RECT inside;
    GetWindowRect(control, &inside);
    InflateRect(&inside, -3, -3);
    OffsetRect(&inside, -area.left, -area.top);
    const unsigned background = pixels[static_cast<std::size_t>(inside.top * width + inside.left)];
    for (int y = inside.top; y < inside.bottom; ++y) {
        const unsigned* row = &pixels[static_cast<std::size_t>(y * width)];
        if (std::any_of(row + inside.left, row + inside.right, [=](unsigned pixel) { return pixel != background; })) {
            return true;
        }
    }
    return false;
}

bool Picture::save(const std::wstring& file) const {
    using namespace Gdiplus;
    using namespace Gdiplus::DllExports;
    constexpr CLSID png = {0x557cf406, 0x1a04, 0x11d3, {0x9a, 0x73, 0x00, 0x00, 0xf8, 0x1e, 0xf3, 0x2e}};
    ULONG_PTR token = 0;
    const GdiplusStartupInput input;
    GdiplusStartup(&token, &input, nullptr);
    GpBitmap* bitmap = nullptr;
    auto* bytes = reinterpret_cast<BYTE*>(const_cast<unsigned*>(pixels.data()));
    GdipCreateBitmapFromScan0(width, height, width * 4, PixelFormat32bppRGB, bytes, &bitmap);
    const bool saved = GdipSaveImageToFile(bitmap, file.c_str(), &png, nullptr) == Ok;
    GdipDisposeImage(bitmap);
    GdiplusShutdown(token);
    return saved;
}

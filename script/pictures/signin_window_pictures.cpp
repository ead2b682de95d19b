// signin_window_pictures FOLDER: takes the documents' pictures of the windowed example and writes them as PNG files.

#include <windows.h>

#include <objidl.h>

// After objidl.h, which it needs.
#include <gdiplus.h>

#include <string>

#include "tests/examples/signin_program.h"

namespace {

void savepicture(const signin_program& program, const std::wstring& file) {
    // There is no window manager to activate the window, so tell its frame to draw itself as active.
    SendMessageW(program.window, WM_NCACTIVATE, TRUE, 0);
    Sleep(500);  // until it is drawn
    RECT area;
    GetWindowRect(program.window, &area);
    const int width = area.right - area.left, height = area.bottom - area.top;
    const HDC screen = GetDC(nullptr);
    Gdiplus::Bitmap bitmap(width, height, PixelFormat24bppRGB);
    Gdiplus::Graphics graphics(&bitmap);
    const HDC memory = graphics.GetHDC();
    BitBlt(memory, 0, 0, width, height, screen, area.left, area.top, SRCCOPY);
    graphics.ReleaseHDC(memory);
    ReleaseDC(nullptr, screen);
    constexpr CLSID png = {0x557cf406, 0x1a04, 0x11d3, {0x9a, 0x73, 0x00, 0x00, 0xf8, 0x1e, 0xf3, 0x2e}};
    if (bitmap.Save(file.c_str(), &png, nullptr) != Gdiplus::Ok) {
        throw std::runtime_error("the picture cannot be written");
    }
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    if (count != 2) {
        return 2;
    }
    ULONG_PTR token = 0;
    const Gdiplus::GdiplusStartupInput input;
    Gdiplus::GdiplusStartup(&token, &input, nullptr);
    const struct {
        const wchar_t *name, *commands, *password;
    } states[] = {
        {L"start", L"", nullptr},
        {L"signed-in", L"", L"analytical engine"},
        {L"failed",
         L"login=throw System.InvalidOperationException The account service answered in a way that is not known:"
         L"\nHTTP/1.1 503 Service Unavailable\nRetry-After: 120\nVia: proxy.example.com\nRequest: 7f3c-11",
         L"analytical engine"},
    };
    for (const auto& state : states) {
        const signin_program program(state.commands);
        if (state.password) {
            program.signin(L"ada@example.com", state.password);
            program.finalstatus();
        }
        savepicture(program, std::wstring(arguments[1]) + L"\\signin-window-" + state.name + L".png");
    }
    Gdiplus::GdiplusShutdown(token);
    return 0;
}

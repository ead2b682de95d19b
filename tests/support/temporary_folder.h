#pragma once

#include <windows.h>

#include <filesystem>
#include <string>

/// A new folder in the user's temporary folder, with letters of several scripts in its name; removed at the end with
/// its content.
class temporary_folder {
public:
    temporary_folder()
        // More than the process identifier, which is reused soon: a test that crashed may have left its folder.
        : path(std::filesystem::temp_directory_path() /
               (L"orvel ñ 日本 вход \xD83D\xDE00 " + std::to_wstring(GetCurrentProcessId()) + L"-" +
                std::to_wstring(GetTickCount64()) + L"-" + std::to_wstring(++count))) {
        std::filesystem::create_directory(path);
    }

    ~temporary_folder() {
        // The system may hold the files of a program for a moment after its end.
        std::error_code failed;
        for (int attempt = 0; attempt < 100 && (std::filesystem::remove_all(path, failed), failed); ++attempt) {
            Sleep(20);
        }
    }

    temporary_folder(const temporary_folder&) = delete;
    temporary_folder& operator=(const temporary_folder&) = delete;

    const std::filesystem::path path;

private:
    static inline int count = 0;
};

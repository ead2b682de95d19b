#pragma once

#include <filesystem>

#include "compiler_runtime.h"
#include "tests/support/program.h"

/// Makes `folder` and copies into it what a host deploys with itself.
inline void deploy(const std::filesystem::path& folder) {
    const std::filesystem::path built = program::ownfolder();
    create_directories(folder);
    copy(built / L"OrvelLoginManagerClient", folder / L"OrvelLoginManagerClient");
    for (const char* name : {"orvellogin.dll", "OrvelLoginClientCLR.dll"}) {
        copy_file(built / name, folder / name);
    }
    for (const char* name : compilerRuntime) {
        copy_file(built / name, folder / name);
    }
}

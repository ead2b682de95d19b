#include "tools/selftest/testlist.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace selftest {

std::vector<test> readtests(const std::filesystem::path& root) {
    std::vector<test> tests;
    for (const auto& entry : std::filesystem::directory_iterator(root)) {
        std::ifstream file(entry.path() / "tests.json");
        if (!file) {
            continue;
        }
        for (const auto& row : nlohmann::json::parse(file)) {
            test read;
            read.name = entry.path().filename().string() + "/" + row.at("name").get<std::string>();
            read.folder = entry.path();
            read.program = std::filesystem::path(row.at("program").get<std::string>()).make_preferred();
            read.arguments = row.at("arguments").get<std::string>();
            read.secondslimit = row.at("seconds").get<unsigned>();
            read.neverrun = row.value("neverrun", "");
            read.needs = row.value("needs", "");
            tests.push_back(read);
        }
    }
    if (tests.empty()) {
        throw std::runtime_error("there is no list of tests (tests.json) in the folders beside this program");
    }
    return tests;
}

}  // namespace selftest

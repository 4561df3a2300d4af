// What the tests of the settings file share: a folder with a path for one, raw access to
// the files in it, and what the program says about them.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "Support/TemporaryFolder.h"

namespace Freedesktop {

inline std::string textOf(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline void writeText(const std::filesystem::path& file, const std::string& text) { std::ofstream(file, std::ios::binary) << text; }

template <typename Function> std::string standardErrorOf(Function&& function)
{
    testing::internal::CaptureStderr();
    function();
    return testing::internal::GetCapturedStderr();
}

struct SettingsFolder {
    TestSupport::TemporaryFolder folder;
    std::filesystem::path file = folder.path() / "defaults.json";

    std::vector<std::filesystem::path> corruptCopies() const
    {
        std::vector<std::filesystem::path> copies;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
            if (entry.path().filename().string().starts_with("defaults.json.corrupt-"))
                copies.push_back(entry.path());
        }
        return copies;
    }
};

}  // namespace Freedesktop

#include "Platform/Freedesktop/DesktopShortcutsModule.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "Support/TemporaryFolder.h"

namespace Platform::Freedesktop {
namespace {

// How often a program that asks twice for the shortcuts of a desktop without any has said
// that it does not know them.
long complaintsWith(const std::string& file)
{
    DesktopShortcutsModule module(file);
    testing::internal::CaptureStderr();
    EXPECT_TRUE(module.copySymbolicHotKeys().empty());
    EXPECT_TRUE(module.copySymbolicHotKeys().empty());
    const auto said = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(said.empty() || said.starts_with("tarnwick: the desktop's own shortcuts are not known: ")) << said;
    return std::count(said.begin(), said.end(), '\n');
}

bool isLoaded(const std::string& file)
{
    std::ifstream maps("/proc/self/maps");
    const std::string all{std::istreambuf_iterator<char>(maps), {}};
    return all.find(file) != std::string::npos;
}

class DesktopShortcutsModuleTest : public testing::Test {
protected:
    DesktopShortcutsModuleTest() { unsetenv("XDG_CURRENT_DESKTOP"); }
};

TEST_F(DesktopShortcutsModuleTest, LoadsAtTheFirstQuestion)
{
    const TestSupport::TemporaryFolder folder;
    const auto copy = folder.path() / "copy.so";
    std::filesystem::copy_file(DESKTOP_SHORTCUTS_MODULE, copy);
    DesktopShortcutsModule module(copy);
    EXPECT_FALSE(isLoaded(copy));
    module.copySymbolicHotKeys();
    EXPECT_TRUE(isLoaded(copy));
}

TEST_F(DesktopShortcutsModuleTest, SaysNothingWhereTheDesktopHasNone) { EXPECT_EQ(complaintsWith(DESKTOP_SHORTCUTS_MODULE), 0); }

TEST_F(DesktopShortcutsModuleTest, SaysOnceThatItIsNotThere) { EXPECT_EQ(complaintsWith("/nowhere/module.so"), 1); }

TEST_F(DesktopShortcutsModuleTest, SaysOnceThatItIsAnotherLibrary) { EXPECT_EQ(complaintsWith("libm.so.6"), 1); }

}  // namespace
}  // namespace Platform::Freedesktop

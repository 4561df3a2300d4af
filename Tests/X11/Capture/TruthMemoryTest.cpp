#include "Platform/X11/Capture/TruthMemory.h"

#include <gtest/gtest.h>

namespace CaptureTests {
namespace {

using namespace Platform::X11;

constexpr std::uint32_t number = 1;

using Pixels = std::vector<std::uint32_t>;

TEST(TruthMemory, TakesTheNewestTruthOfAPlace)
{
    Platform::X11::TruthMemory memory;
    memory.remember(number, {0, 0, 3, 1}, Pixels{1, 2, 3}, Pixels{0x11, 0x22, 0x33});
    memory.remember(number, {1, 0, 1, 1}, Pixels{2}, Pixels{0x44});
    Region covered;
    covered.add({0, 0, 3, 1});
    Pixels picture(3);
    memory.recover(number, {0, 0, 3, 1}, covered, Pixels{1, 2, 3}, picture);
    EXPECT_EQ(picture, (Pixels{0x11, 0x44, 0x33}));
    // The same place again is the newest.
    memory.remember(number, {0, 0, 3, 1}, Pixels{1, 2, 3}, Pixels{0x55, 0x66, 0x77});
    memory.recover(number, {0, 0, 3, 1}, covered, Pixels{1, 2, 3}, picture);
    EXPECT_EQ(picture, (Pixels{0x55, 0x66, 0x77}));
}

// What an older picture said of a place that has changed is over.
TEST(TruthMemory, TakesTheComposedValueWhereTheNewestTruthIsOfAnother)
{
    Platform::X11::TruthMemory memory;
    memory.remember(number, {0, 0, 2, 1}, Pixels{1, 2}, Pixels{0x11, 0x22});
    memory.remember(number, {1, 0, 1, 1}, Pixels{7}, Pixels{0x44});
    Region covered;
    covered.add({0, 0, 2, 1});
    Pixels picture(2);
    memory.recover(number, {0, 0, 2, 1}, covered, Pixels{1, 2}, picture);
    EXPECT_EQ(picture, (Pixels{0x11, 2}));
}

TEST(TruthMemory, LeavesUncoveredPixelsAlone)
{
    Platform::X11::TruthMemory memory;
    memory.remember(number, {0, 0, 2, 2}, Pixels{1, 2, 3, 4}, Pixels{0x11, 0x22, 0x33, 0x44});
    Region covered;
    covered.add({0, 1, 1, 1});
    Pixels picture = {5, 6, 7, 8};
    memory.recover(number, {0, 0, 2, 2}, covered, Pixels{1, 2, 3, 4}, picture);
    EXPECT_EQ(picture, (Pixels{5, 6, 0x33, 8}));
}

}  // namespace
}  // namespace CaptureTests

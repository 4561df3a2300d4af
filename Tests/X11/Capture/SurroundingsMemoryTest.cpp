#include "Platform/X11/Capture/SurroundingsMemory.h"

#include <gtest/gtest.h>

#include "Support/ImageOfRows.h"

namespace CaptureTests {
namespace {

using namespace Platform::X11;
using Pixels = std::vector<std::uint32_t>;

constexpr std::uint32_t number = 1;

class SurroundingsMemory : public testing::Test {
protected:
    // Every pixel of the part is composed as its place says; the screen shows that and `tint`.
    static std::uint32_t composedAt(int x, int y) { return static_cast<std::uint32_t>((x + 100) * 1000 + y + 100); }
    static Pixels composed(const DeviceRect& part)
    {
        Pixels pixels;
        for (int y = part.y; y < part.bottom(); ++y) {
            for (int x = part.x; x < part.right(); ++x)
                pixels.push_back(composedAt(x, y));
        }
        return pixels;
    }
    void learn(const DeviceRect& part, std::uint32_t tint)
    {
        const auto pixels = composed(part);
        auto screen = pixels;
        for (auto& pixel : screen)
            pixel += tint;
        m_memory.learn(part, pixels, screen);
    }
    // What is added to the composed value of the pixels of one row.
    Pixels tintsOf(int x, int y, int width)
    {
        const DeviceRect area = {x, y, width, 1};
        Region covered;
        covered.add(area);
        const auto pixels = composed(area);
        Pixels picture(pixels.size(), 0x123456);
        m_memory.recover(area, covered, pixels, picture);
        for (std::size_t i = 0; i < picture.size(); ++i)
            picture[i] -= pixels[i];
        return picture;
    }

    Platform::X11::SurroundingsMemory m_memory;
};

TEST_F(SurroundingsMemory, RecoversWhatItLearned)
{
    m_memory.follow(number, {0, 0, 8, 8});
    learn({1, 2, 3, 1}, 5);
    EXPECT_EQ(tintsOf(0, 2, 6), (Pixels{0, 5, 5, 5, 0, 0}));
    EXPECT_EQ(tintsOf(0, 3, 6), (Pixels{0, 0, 0, 0, 0, 0}));
}

// As it is beyond the right edge of the one before, though not below it.
TEST_F(SurroundingsMemory, KnowsNothingOfALargerPlaceFarAway)
{
    m_memory.follow(number, {0, 0, 10, 10});
    learn({0, 0, 10, 10}, 5);
    m_memory.follow(number, {1000, 0, 20, 20});
    EXPECT_EQ(tintsOf(1000, 3, 4), (Pixels{0, 0, 0, 0}));
}

TEST_F(SurroundingsMemory, KnowsWhichOverlayItFollows)
{
    EXPECT_FALSE(m_memory.follows(number));
    m_memory.follow(number, {0, 0, 8, 8});
    EXPECT_TRUE(m_memory.follows(number));
    EXPECT_FALSE(m_memory.follows(number + 1));
    learn({0, 0, 8, 8}, 5);
    m_memory.follow(number + 1, {0, 0, 8, 8});
    EXPECT_EQ(tintsOf(0, 0, 2), (Pixels{0, 0}));
}

TEST_F(SurroundingsMemory, ShowsTheComposedValueWhereItHasChanged)
{
    m_memory.follow(number, {0, 0, 8, 8});
    learn({0, 0, 8, 8}, 5);
    Region covered;
    covered.add({0, 0, 3, 1});
    Pixels picture(3);
    m_memory.recover({0, 0, 3, 1}, covered, Pixels{composedAt(0, 0), 77, composedAt(2, 0)}, picture);
    EXPECT_EQ(picture, (Pixels{composedAt(0, 0) + 5, 77, composedAt(2, 0) + 5}));
    // A pixel that is as it was again shows what it did.
    EXPECT_EQ(tintsOf(0, 0, 3), (Pixels{5, 5, 5}));
}

TEST_F(SurroundingsMemory, LeavesUncoveredPixelsAlone)
{
    m_memory.follow(number, {0, 0, 8, 8});
    learn({0, 0, 8, 8}, 5);
    Region covered;
    covered.add({1, 0, 1, 1});
    Pixels picture{9, 9, 9};
    m_memory.recover({0, 0, 3, 1}, covered, composed({0, 0, 3, 1}), picture);
    EXPECT_EQ(picture, (Pixels{9, composedAt(1, 0) + 5, 9}));
}

TEST_F(SurroundingsMemory, KeepsWhatItKnowsWhileTheOverlayMoves)
{
    m_memory.follow(number, {0, 0, 8, 8});
    learn({0, 0, 8, 8}, 5);
    for (int x = 1; x <= 6; ++x) {
        m_memory.follow(number, {x, -x, 8, 8});
        learn({x + 7, -x, 1, 8}, 5);
        learn({x, -x, 7, 1}, 5);
    }
    EXPECT_EQ(tintsOf(6, -6, 8), Pixels(8, 5));
    EXPECT_EQ(tintsOf(6, 1, 8), Pixels(8, 5));
    // And a little of what it left: it may come back.
    EXPECT_EQ(tintsOf(5, 1, 1), Pixels{5});
}

TEST_F(SurroundingsMemory, KnowsNothingOfAPlaceThatSharesItsMemory)
{
    m_memory.follow(number, {0, 0, 8, 8});
    learn({0, 0, 8, 8}, 5);
    m_memory.follow(number, {12, 0, 8, 8});  // 12 is the width of its window
    EXPECT_EQ(tintsOf(12, 0, 8), Pixels(8, 0));
    m_memory.follow(number, {-100, -50, 8, 8});
    learn({-100, -50, 8, 8}, 3);
    EXPECT_EQ(tintsOf(-100, -43, 8), Pixels(8, 3));
}

TEST_F(SurroundingsMemory, GrowsWithTheOverlay)
{
    m_memory.follow(number, {0, 0, 8, 8});
    learn({0, 0, 8, 8}, 5);
    m_memory.follow(number, {-4, -4, 16, 16});
    EXPECT_EQ(tintsOf(-1, 7, 10), (Pixels{0, 5, 5, 5, 5, 5, 5, 5, 5, 0}));
    learn({-4, -4, 16, 16}, 6);
    EXPECT_EQ(tintsOf(-4, 11, 16), Pixels(16, 6));
}

TEST_F(SurroundingsMemory, RecallsWhatWasKeptAndWhatWasLearned)
{
    m_memory.follow(number, {0, 0, 8, 8});
    EXPECT_FALSE(m_memory.isKept({0, 0, 1, 1}));
    m_memory.keep({0, 0, 2, 2}, Pixels{1, 2, 3, 4});
    learn({2, 0, 1, 2}, 5);
    EXPECT_TRUE(m_memory.isKept({0, 0, 3, 2}));
    EXPECT_FALSE(m_memory.isKept({0, 0, 4, 1}));
    EXPECT_FALSE(m_memory.isKept({0, 0, 1, 3}));
    Pixels picture(6);
    m_memory.recall({0, 0, 3, 2}, picture);
    EXPECT_EQ(
        picture, (Pixels{0xff000001, 0xff000002, 0xff000000 | (composedAt(2, 0) + 5), 0xff000003, 0xff000004, 0xff000000 | (composedAt(2, 1) + 5)}));
}

TEST_F(SurroundingsMemory, RecallsInRowsWhatItRecallsInAPicture)
{
    m_memory.follow(number, {0, 0, 8, 8});
    // On to where places lie on both sides of its memory's edges.
    for (int x = 0; x < 30; x += 3) {
        const DeviceRect area = {x, -2 * x, 8, 8};
        m_memory.follow(number, area);
        learn(area, static_cast<std::uint32_t>(x));
        Pixels picture(64);
        m_memory.recall(area, picture);
        const auto rows = TestSupport::imageOf(*m_memory.recalled(area));
        EXPECT_EQ(Pixels(rows.pixels().begin(), rows.pixels().end()), picture) << x;
        EXPECT_EQ(rows.pixel(7, 1), 0xff000000 | (composedAt(x + 7, 1 - 2 * x) + static_cast<std::uint32_t>(x)));
    }
}

TEST_F(SurroundingsMemory, LeavesRowsAloneThatSomebodyStillHas)
{
    m_memory.follow(number, {0, 0, 8, 8});
    learn({0, 0, 8, 8}, 5);
    const auto rows = m_memory.recalled({1, 1, 2, 2});
    const auto before = TestSupport::imageOf(*rows);
    EXPECT_NE(m_memory.recalled({3, 3, 1, 1}), rows);
    EXPECT_EQ(TestSupport::imageOf(*rows), before);
    m_memory.follow(number, {0, 0, 20, 20});
    learn({0, 0, 20, 20}, 6);
    EXPECT_EQ(TestSupport::imageOf(*rows), before);
    m_memory.forget();
    EXPECT_EQ(TestSupport::imageOf(*rows), before);
}

TEST_F(SurroundingsMemory, TakesItsRowsAgainWhenNobodyHasThem)
{
    m_memory.follow(number, {0, 0, 8, 8});
    learn({0, 0, 8, 8}, 5);
    const auto* const first = m_memory.recalled({0, 0, 2, 2}).get();
    EXPECT_EQ(m_memory.recalled({1, 1, 2, 2}).get(), first);
}

// What was found to be kept is not looked at again.
TEST_F(SurroundingsMemory, KeepsNothingOfAnAreaThatWasKeptBeforeAndIsNoMore)
{
    const auto begin = [this] {
        m_memory.forget();
        m_memory.follow(number, {0, 0, 8, 8});
        learn({0, 0, 8, 8}, 5);
        EXPECT_TRUE(m_memory.isKept({0, 0, 8, 8}));
    };
    begin();
    m_memory.drop({3, 3, 1, 1});
    EXPECT_FALSE(m_memory.isKept({0, 0, 8, 8}));
    EXPECT_TRUE(m_memory.isKept({4, 0, 4, 8}));
    EXPECT_FALSE(m_memory.isKept({3, 0, 5, 8}));
    begin();
    m_memory.dropAll();
    EXPECT_FALSE(m_memory.isKept({0, 0, 8, 8}));
    begin();
    m_memory.follow(number, {12, 0, 8, 8});  // 12 is the width of its window
    EXPECT_FALSE(m_memory.isKept({12, 0, 8, 8}));
    m_memory.follow(number, {0, 0, 8, 8});
    EXPECT_FALSE(m_memory.isKept({0, 0, 8, 8}));
    begin();
    m_memory.follow(number, {0, 0, 20, 8});
    EXPECT_FALSE(m_memory.isKept({0, 0, 8, 8}));
    begin();
    m_memory.forget();
    m_memory.follow(number, {0, 0, 8, 8});
    EXPECT_FALSE(m_memory.isKept({0, 0, 8, 8}));
}

TEST_F(SurroundingsMemory, KeepsNothingThatWasDroppedLeftOrForgotten)
{
    m_memory.follow(number, {0, 0, 8, 8});
    learn({0, 0, 8, 8}, 5);
    m_memory.drop({3, 3, 100, 1});
    EXPECT_TRUE(m_memory.isKept({0, 0, 8, 3}));
    EXPECT_TRUE(m_memory.isKept({0, 3, 3, 5}));
    EXPECT_FALSE(m_memory.isKept({2, 3, 2, 1}));
    EXPECT_TRUE(m_memory.isKept({0, 4, 8, 4}));
    m_memory.drop({-100, -100, 50, 50});
    EXPECT_TRUE(m_memory.isKept({0, 4, 8, 4}));
    m_memory.dropAll();
    EXPECT_FALSE(m_memory.isKept({7, 7, 1, 1}));
    // What is known of the screen stays known.
    EXPECT_EQ(tintsOf(0, 3, 8), Pixels(8, 5));

    learn({0, 0, 8, 8}, 5);
    m_memory.follow(number, {6, 0, 8, 8});
    EXPECT_TRUE(m_memory.isKept({6, 0, 2, 8}));
    EXPECT_FALSE(m_memory.isKept({6, 0, 3, 8}));
    // 12 is the width of its window: the first column's memory is this one's now.
    EXPECT_FALSE(m_memory.isKept({12, 0, 1, 8}));
    m_memory.follow(number, {6, 0, 20, 8});
    EXPECT_FALSE(m_memory.isKept({6, 0, 2, 8}));
    m_memory.forget();
    EXPECT_FALSE(m_memory.isKept({6, 0, 1, 1}));
}

}  // namespace
}  // namespace CaptureTests

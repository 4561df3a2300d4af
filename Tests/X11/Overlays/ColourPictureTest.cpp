// Pictures of one colour under a compositor, by which they are blended.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "Support/AllocationCounter.h"
#include "Support/Desktop/Wallpaper.h"
#include "Support/WaitUntil.h"
#include "X11/Overlays/OverlaysSetting.h"

namespace OverlayTests {
namespace {

constexpr std::uint32_t white = 0xffffffff;
constexpr std::uint32_t black85 = 0xd9000000;
constexpr Rect row = {0, 400, 800, 1};
constexpr Rect column = {300, 0, 1, 600};

class ColourPicture : public OverlaysSetting {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(TestSupport::waitUntil([this] { return requests->hasCompositor(); }));
        overlay = makeOverlay();
        overlay->makeKeyAndOrderFront();
    }

    void present(const std::vector<Picture>& pictures) { overlay->present(pictures); }

    // Compositors round each in their own way.
    bool showsNearly(int x, int y, std::uint32_t colour)
    {
        const auto shown = screenshot().pixel(x, y);
        for (const unsigned shift : {0U, 8U, 16U}) {
            if (std::abs(static_cast<int>((shown >> shift) & 0xff) - static_cast<int>((colour >> shift) & 0xff)) > 2)
                return false;
        }
        return true;
    }
    bool comesToShow(int x, int y, std::uint32_t colour)
    {
        return loopUntil([&] { return showsNearly(x, y, colour); }, std::chrono::seconds(5));
    }

    TestSupport::Wallpaper wallpaper{desktop.displayName(), solid(800, 600, white)};
    TestSupport::Process picom{desktop.server().start({"picom", "--backend", "xrender", "--config", "/dev/null"})};
    std::unique_ptr<OverlayWindow> overlay;
};

TEST_F(ColourPicture, IsBlendedWithWhatLiesBeneath)
{
    mapForeign({400, 0, 400, 600}, 0x8040c0, true);
    present({{.rectangle = row, .colour = black85}});
    EXPECT_TRUE(comesToShow(100, 199, 0x262626));
    EXPECT_TRUE(comesToShow(500, 199, 0x130a1d));
    EXPECT_TRUE(showsNearly(100, 198, white));
    EXPECT_TRUE(showsNearly(100, 200, white));
}

TEST_F(ColourPicture, IsBlendedWithAPictureBeneathIt)
{
    const auto red50 = solid(800, 1, 0x80800000);
    present({{.rectangle = row, .image = &red50}, {.rectangle = column, .colour = black85}});
    EXPECT_TRUE(comesToShow(100, 199, 0xff7f7f));
    EXPECT_TRUE(comesToShow(300, 100, 0x262626));
    EXPECT_TRUE(comesToShow(300, 199, 0x261313));
}

TEST_F(ColourPicture, LiesBeneathAnImageThatComesLater)
{
    const auto red50 = solid(1, 600, 0x80800000);
    present({{.rectangle = row, .colour = black85}, {.rectangle = column, .image = &red50}});
    EXPECT_TRUE(comesToShow(100, 199, 0x262626));
    EXPECT_TRUE(comesToShow(300, 100, 0xff7f7f));
    EXPECT_TRUE(comesToShow(300, 199, 0x931313));
}

// As two strokes of one line, wherever they go.
TEST_F(ColourPicture, CoversOnceWhereTwoOfAnOverlayCross)
{
    for (const int step : {0, 1, 50}) {
        const double by = step;
        present({{.rectangle = {0, 400 - by, 800, 1}, .colour = black85}, {.rectangle = {300 + by, 0, 1, 600}, .colour = black85}});
        EXPECT_TRUE(comesToShow(300 + step, 199 + step, 0x262626)) << step;
        for (const int beside : {-1, 1}) {
            EXPECT_TRUE(comesToShow(300 + step + beside, 199 + step, 0x262626)) << step;
            EXPECT_TRUE(comesToShow(300 + step, 199 + step + beside, 0x262626)) << step;
        }
    }
    // What was left out is painted once there is no other.
    present({{.rectangle = row, .colour = black85}});
    EXPECT_TRUE(comesToShow(350, 300, white));
    EXPECT_TRUE(comesToShow(300, 199, 0x262626));
}

TEST_F(ColourPicture, CoversOnceAlsoWhenItIsShownAgain)
{
    const std::vector<Picture> pictures = {{.rectangle = row, .colour = black85}, {.rectangle = column, .colour = black85}};
    present(pictures);
    ASSERT_TRUE(comesToShow(100, 199, 0x262626));
    overlay->orderOut();
    ASSERT_TRUE(comesToShow(100, 199, white));
    overlay->makeKeyAndOrderFront();
    EXPECT_TRUE(comesToShow(100, 199, 0x262626));
    EXPECT_TRUE(comesToShow(300, 199, 0x262626));
}

TEST_F(ColourPicture, IsPaintedWithoutAnAllocation)
{
    const auto presentAt = [this](double by) {
        const Picture pictures[] = {{.rectangle = {0, 400 - by, 800, 1}, .colour = black85}, {.rectangle = {300 + by, 0, 1, 600}, .colour = black85}};
        overlay->present(pictures);
        requests->waitForServer();
    };
    // The queue of the server's news grows with what a compositor happens to make, so not each
    // time.
    constexpr int attempts = 10;
    long fewest = std::numeric_limits<long>::max();
    for (int attempt = 0; attempt < attempts && fewest > 0; ++attempt) {
        settle();
        const TestSupport::AllocationCounter counter;
        for (int i = 1; i <= 100; ++i)
            presentAt(i);
        fewest = std::min(fewest, counter.count());
    }
    EXPECT_EQ(fewest, 0);
}

TEST_F(ColourPicture, IsBlendedWithThatOfAnotherOverlay)
{
    const auto other = makeOverlay();
    other->makeKeyAndOrderFront();
    present({{.rectangle = row, .colour = black85}});
    const Picture crossing{.rectangle = column, .colour = black85};
    other->present({&crossing, 1});
    EXPECT_TRUE(comesToShow(100, 199, 0x262626));
    EXPECT_TRUE(comesToShow(300, 199, 0x060606));
}

TEST_F(ColourPicture, IsTheLaterOneWhereTwoOfAnOverlayOverlap)
{
    present({{.rectangle = row, .colour = red}, {.rectangle = column, .colour = black85}});
    EXPECT_TRUE(comesToShow(100, 199, red));
    EXPECT_TRUE(comesToShow(300, 199, 0x262626));
}

}  // namespace
}  // namespace OverlayTests

#include "Tarnwick/CrosshairOverlay.h"

#include <gtest/gtest.h>

#include <array>

#include "Support/FakeSystem.h"

namespace Tarnwick {
namespace {

using Platform::Rect;

const Platform::Screen mainScreen{"MAIN", {0, 0, 1920, 1080}, 1};
const Platform::Screen sideScreen{"SIDE", {1920, 56, 1280, 1024}, 2};

class CrosshairOverlayWindowTest : public testing::Test {
protected:
    std::unique_ptr<CrosshairOverlayWindow> makeWindow()
    {
        return std::make_unique<CrosshairOverlayWindow>(fake.system, captureQueue, [this] { ++dismissals; });
    }

    TestSupport::FakeSystem fake;
    CaptureQueue captureQueue{fake.serialQueues};
    int dismissals = 0;
};

TEST_F(CrosshairOverlayWindowTest, CoversTheMainScreenOnly)
{
    fake.screens.set({mainScreen, sideScreen}, 1);
    const auto window = makeWindow();
    ASSERT_EQ(fake.overlayWindows.windows().size(), 1U);
    EXPECT_EQ(fake.overlayWindows.last().style().frame, (Rect{1920, 56, 1280, 1024}));
    EXPECT_FALSE(fake.overlayWindows.last().style().hasShadow);
    EXPECT_EQ(window->frame(), (Rect{1920, 56, 1280, 1024}));
    EXPECT_FALSE(fake.overlayWindows.last().isShown());
}

TEST_F(CrosshairOverlayWindowTest, IsEmptyAndDrawsNothingVisibleWithoutAMainScreen)
{
    fake.screens.set({});
    const auto window = makeWindow();
    EXPECT_EQ(window->frame(), (Rect{0, 0, 0, 0}));
    window->contentView().setMouse({10, 20});
    window->contentView().setNeedsDisplay();
    fake.mainLoop.runUntilIdle();
    for (const auto& picture : fake.overlayWindows.last().pictures())
        EXPECT_EQ(picture.rectangle.width * picture.rectangle.height, 0);
}

TEST_F(CrosshairOverlayWindowTest, GivesTheViewTheSizeOfItsFrame)
{
    const auto window = makeWindow();
    window->contentView().scheduleStripRefresh(window->windowNumber());
    fake.serialQueues.runAll();
    EXPECT_EQ(fake.screenCapture.requests()[0].rectangles[0].width, 1920);
    EXPECT_EQ(fake.screenCapture.requests()[0].rectangles[1].height, 1080);
}

TEST_F(CrosshairOverlayWindowTest, CallsTheDismissHandlerOnEscape)
{
    const auto window = makeWindow();
    window->makeKeyAndOrderFront();
    fake.overlayWindows.pressKey({.keyCode = 53});
    EXPECT_EQ(dismissals, 1);
}

TEST_F(CrosshairOverlayWindowTest, StaysUpOnAnyOtherKey)
{
    const auto window = makeWindow();
    window->makeKeyAndOrderFront();
    for (const std::uint16_t key : std::array<std::uint16_t, 12>{0, 7, 36, 48, 49, 51, 52, 54, 123, 124, 125, 126})
        EXPECT_TRUE(fake.overlayWindows.pressKey({.keyCode = key}));
    EXPECT_EQ(dismissals, 0);
    EXPECT_TRUE(fake.overlayWindows.last().isShown());
}

TEST_F(CrosshairOverlayWindowTest, CallsTheDismissHandlerWhenItCannotStayAboveEverything)
{
    const auto window = makeWindow();
    window->makeKeyAndOrderFront();
    fake.overlayWindows.last().requestDismissal();
    EXPECT_EQ(dismissals, 1);
}

TEST_F(CrosshairOverlayWindowTest, FollowsItsScreenWhenTheScreensChange)
{
    fake.screens.set({mainScreen, sideScreen}, 1);
    const auto window = makeWindow();
    fake.screens.set({mainScreen, {"SIDE", {-1280, 0, 1280, 1024}, 1}}, 0);
    EXPECT_EQ(window->frame(), (Rect{-1280, 0, 1280, 1024}));
}

TEST_F(CrosshairOverlayWindowTest, MovesToTheMainScreenWhenItsOwnGoes)
{
    fake.screens.set({mainScreen, sideScreen}, 1);
    const auto window = makeWindow();
    fake.screens.set({mainScreen}, 0);
    EXPECT_EQ(window->frame(), (Rect{0, 0, 1920, 1080}));
    fake.screens.set({mainScreen, sideScreen}, 1);
    EXPECT_EQ(window->frame(), (Rect{0, 0, 1920, 1080}));
}

TEST_F(CrosshairOverlayWindowTest, TakesTheMainScreenOnceThereIsOne)
{
    fake.screens.set({});
    const auto window = makeWindow();
    fake.screens.set({mainScreen, sideScreen}, 1);
    EXPECT_EQ(window->frame(), (Rect{1920, 56, 1280, 1024}));
}

TEST_F(CrosshairOverlayWindowTest, LeavesNothingBehind)
{
    auto window = makeWindow();
    window->makeKeyAndOrderFront();
    EXPECT_EQ(fake.screens.observerCount(), 1);
    window.reset();
    EXPECT_EQ(fake.screens.observerCount(), 0);
    EXPECT_TRUE(fake.overlayWindows.windows().empty());
    EXPECT_TRUE(fake.overlayWindows.shown().empty());
}

TEST_F(CrosshairOverlayWindowTest, PresentsNothingOnceItIsGone)
{
    auto window = makeWindow();
    window->contentView().setNeedsDisplay();
    const auto view = window->contentView().shared_from_this();
    window.reset();
    fake.log.clear();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(fake.log.count("overlay 1 present"), 0);
}

}  // namespace
}  // namespace Tarnwick

// Crosshair and loupe at the same time: which lies above, and what each captures.
#include <gtest/gtest.h>

#include "Support/FakeSystem.h"
#include "Tarnwick/CrosshairController.h"
#include "Tarnwick/LoupeOverlayWindow.h"

namespace Tarnwick {
namespace {

constexpr std::chrono::nanoseconds oneTick{16'666'666};

class BothOverlays : public testing::Test {
protected:
    BothOverlays() { fake.pointer.moveTo(Platform::Point{500, 300}); }

    void tick()
    {
        fake.mainLoop.advance(oneTick);
        fake.serialQueues.runAll();
        fake.mainLoop.runUntilIdle();
    }

    void press(std::uint16_t key)
    {
        EXPECT_TRUE(fake.overlayWindows.pressKey({.keyCode = key}));
        fake.mainLoop.runUntilIdle();
    }

    std::vector<std::int64_t> shownFromTheLowest()
    {
        std::vector<std::int64_t> numbers;
        for (const auto* window : fake.overlayWindows.shown())
            numbers.push_back(window->windowNumber());
        return numbers;
    }

    TestSupport::FakeSystem fake;
    KeyboardShortcuts::Texts texts;
    KeyboardShortcuts::KeyboardShortcuts shortcuts{
        fake.userDefaults, fake.notifications, fake.hotKeys, fake.keyboardLayout, fake.reservedShortcuts, texts};
    CrosshairController controller{fake.system, shortcuts, [this](std::function<void()> onDismiss) {
                                       return std::make_unique<LoupeOverlayWindow>(fake.system, fake.shapePainter, std::move(onDismiss));
                                   }};
};

// So the loupe magnifies the crosshair's lines, and the lines end at the loupe.
TEST_F(BothOverlays, TheLoupeShownLastLiesAboveTheCrosshair)
{
    controller.showCrosshair();
    controller.showLoupe();
    EXPECT_EQ(shownFromTheLowest(), (std::vector<std::int64_t>{1, 2}));
}

// So the crosshair's lines run over the loupe, inverting it, and the loupe does not see them.
TEST_F(BothOverlays, TheCrosshairShownLastLiesAboveTheLoupe)
{
    controller.showLoupe();
    controller.showCrosshair();
    EXPECT_EQ(shownFromTheLowest(), (std::vector<std::int64_t>{1, 2}));
    EXPECT_TRUE(fake.overlayWindows.windows()[0]->style().hasShadow);
    EXPECT_FALSE(fake.overlayWindows.windows()[1]->style().hasShadow);
}

TEST_F(BothOverlays, EachLeavesItselfOutByItsOwnNumber)
{
    controller.showCrosshair();
    controller.showLoupe();
    tick();
    fake.log.clear();
    tick();
    EXPECT_EQ(fake.log.takeLinesOf({"screenCapture"}),
        (std::vector<std::string>{"screenCapture.windowsBelow 2 best", "screenCapture.windowsBelow 1 nominal"}));
}

TEST_F(BothOverlays, BothFollowThePointerInTheSameTick)
{
    controller.showCrosshair();
    controller.showLoupe();
    tick();
    fake.pointer.moveTo(Platform::Point{700, 400});
    tick();
    EXPECT_EQ(fake.overlayWindows.windows()[0]->pictures()[1].rectangle.x, 699.5);
    EXPECT_EQ(fake.overlayWindows.windows()[1]->frame().origin(), (Platform::Point{590, 262}));
}

TEST_F(BothOverlays, TheOneShownLastTakesTheKeysAndThenTheOther)
{
    controller.showCrosshair();
    controller.showLoupe();
    press(19);
    EXPECT_EQ(fake.userDefaults.doubleValue("loupe.diameter"), 260);
    press(Platform::escapeKeyCode);
    EXPECT_FALSE(controller.showsLoupe());
    EXPECT_TRUE(controller.showsCrosshair());
    press(19);
    EXPECT_EQ(fake.userDefaults.doubleValue("loupe.diameter"), 260);
    press(Platform::escapeKeyCode);
    EXPECT_FALSE(controller.showsCrosshair());
    EXPECT_TRUE(fake.cursor.isVisible());
}

TEST_F(BothOverlays, TheLoupesShortcutBringsItBackAtItsLastSize)
{
    controller.showLoupe();
    press(19);
    press(47);
    controller.showLoupe();
    EXPECT_FALSE(controller.showsLoupe());
    controller.showLoupe();
    EXPECT_EQ(fake.overlayWindows.last().frame().size(), (Platform::Size{260, 288}));
    EXPECT_EQ(fake.screenCapture.requests().back().rectangles[0].width, 51);
}

}  // namespace
}  // namespace Tarnwick

// Where the loupe lies, what it captures, and its keys.
#include "LoupeOverlayWindowFixture.h"
#include "Support/AllocationCounter.h"

namespace Tarnwick {
namespace {

using Platform::Rect;

using LoupeOverlayWindowKeys = LoupeOverlayWindowTest;
using LoupeOverlayWindowPlace = LoupeOverlayWindowTest;

TEST_F(LoupeOverlayWindowTest, IsMadeWithTheDefaultSizeAndAShadow)
{
    openWith(300.0, std::nullopt);
    ASSERT_EQ(fake.overlayWindows.windows().size(), 1U);
    EXPECT_EQ(window().style().frame, (Rect{0, 0, 220, 248}));
    EXPECT_TRUE(window().style().hasShadow);
    EXPECT_FALSE(window().isShown());
}

TEST_F(LoupeOverlayWindowTest, LiesAroundThePointerWithTheDefaultSampleFromTheStart)
{
    open();
    EXPECT_EQ(loupe->frame(), (Rect{390, 162, 220, 248}));
    ASSERT_EQ(fake.screenCapture.requests().size(), 1U);
    EXPECT_EQ(lastCapture().windowNumber, 1U);
    EXPECT_EQ(lastCapture().resolution, Platform::CaptureResolution::best);
    EXPECT_EQ(lastCapture().rectangles, (std::vector<Rect>{{473, 655, 55, 55}}));
}

TEST_F(LoupeOverlayWindowTest, PresentsOnceAfterItWasMade)
{
    open();
    EXPECT_EQ(window().presentCount(), 0);
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(window().presentCount(), 1);
    ASSERT_EQ(window().pictures().size(), 1U);
    EXPECT_EQ(window().pictures()[0].rectangle, (Rect{0, 0, 220, 248}));
    EXPECT_EQ(window().pictures()[0].image.width(), 220);
    EXPECT_EQ(window().pictures()[0].image.height(), 248);
}

TEST_F(LoupeOverlayWindowTest, IsMadeStepByStep)
{
    open();
    EXPECT_EQ(fake.log.lines(),
        (std::vector<std::string>{"overlayWindows.make 1", "userDefaults.object loupe.diameter", "overlay 1 setFrame", "pointer.location",
            "userDefaults.object loupe.diameter", "overlay 1 setFrame", "userDefaults.object loupe.diameter", "userDefaults.object loupe.zoom",
            "screenCapture.windowsBelow 1 best"}));
}

TEST_F(LoupeOverlayWindowTest, StaysAtTheOriginWhileThePointerIsUnknown)
{
    fake.pointer.moveTo(std::nullopt);
    open();
    EXPECT_EQ(loupe->frame(), (Rect{0, 0, 220, 248}));
    EXPECT_TRUE(fake.screenCapture.requests().empty());
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(window().presentCount(), 1);
}

TEST_F(LoupeOverlayWindowTest, IsShownAndHiddenByItsOwner)
{
    open();
    loupe->makeKeyAndOrderFront();
    EXPECT_TRUE(window().isShown());
    loupe->orderOut();
    EXPECT_FALSE(window().isShown());
    loupe.reset();
    EXPECT_TRUE(fake.overlayWindows.windows().empty());
}

TEST_F(LoupeOverlayWindowTest, PresentsNothingOnceItIsGone)
{
    open();
    loupe.reset();
    fake.log.clear();
    fake.mainLoop.runUntilIdle();
    EXPECT_TRUE(fake.log.lines().empty());
}

TEST_F(LoupeOverlayWindowTest, CallsTheDismissHandlerWhenItCannotStayAboveEverything)
{
    open();
    window().requestDismissal();
    EXPECT_EQ(dismissals, 1);
}

TEST_F(LoupeOverlayWindowPlace, RoundsItsOriginAndSamplesAroundTheRoundedCentre)
{
    open();
    loupe->updateCursor({500.4, 300.6});
    EXPECT_EQ(loupe->frame(), (Rect{390, 163, 220, 248}));
    EXPECT_EQ(lastCapture().rectangles, (std::vector<Rect>{{473, 654, 55, 55}}));
}

TEST_F(LoupeOverlayWindowPlace, RoundsHalvesAwayFromZero)
{
    open();
    loupe->updateCursor({500.5, 300.5});
    EXPECT_EQ(loupe->frame().origin(), (Platform::Point{391, 163}));
    EXPECT_EQ(lastCapture().rectangles, (std::vector<Rect>{{474, 654, 55, 55}}));
    loupe->updateCursor({99.5, 127.5});
    EXPECT_EQ(loupe->frame().origin(), (Platform::Point{-11, -11}));
}

TEST_F(LoupeOverlayWindowPlace, LiesPartlyOffTheScreenNearItsEdges)
{
    open();
    loupe->updateCursor({0, 982});
    EXPECT_EQ(loupe->frame(), (Rect{-110, 844, 220, 248}));
    EXPECT_EQ(lastCapture().rectangles, (std::vector<Rect>{{-27, -27, 55, 55}}));
    loupe->updateCursor({1512, 0});
    EXPECT_EQ(loupe->frame(), (Rect{1402, -138, 220, 248}));
    EXPECT_EQ(lastCapture().rectangles, (std::vector<Rect>{{1485, 955, 55, 55}}));
}

TEST_F(LoupeOverlayWindowPlace, FollowsThePointerOntoAnotherScreenAtThatScreensScale)
{
    fake.screens.set({{"MAIN", {0, 0, 1920, 1080}, 1}, {"SIDE", {1920, 56, 1280, 1024}, 2}});
    open();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(window().pictures()[0].image.width(), 220);
    loupe->updateCursor({2500, 500});
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(loupe->frame(), (Rect{2390, 362, 220, 248}));
    EXPECT_EQ(window().pictures()[0].image.width(), 440);
    EXPECT_EQ(window().pictures()[0].image.height(), 496);
    EXPECT_EQ(window().pictures()[0].rectangle, (Rect{0, 0, 220, 248}));
}

TEST_F(LoupeOverlayWindowPlace, CapturesAndPresentsAtEveryCallWhetherThePointerMovedOrNot)
{
    open();
    fake.mainLoop.runUntilIdle();
    for (int i = 0; i < 3; ++i) {
        loupe->updateCursor({500, 300});
        fake.mainLoop.runUntilIdle();
    }
    EXPECT_EQ(fake.screenCapture.requests().size(), 4U);
    EXPECT_EQ(window().presentCount(), 4);
}

TEST_F(LoupeOverlayWindowKeys, ChangesTheDiameterByItsStep)
{
    open();
    press(key2);
    EXPECT_EQ(stored("loupe.diameter"), 260);
    EXPECT_EQ(loupe->frame(), (Rect{370, 142, 260, 288}));
    press(key1);
    press(key1);
    EXPECT_EQ(stored("loupe.diameter"), 180);
    EXPECT_EQ(loupe->frame(), (Rect{410, 182, 180, 208}));
}

TEST_F(LoupeOverlayWindowKeys, KeepsTheDiameterWithinItsBoundsOnThePathTaken)
{
    open();
    std::vector<double> diameters;
    for (const auto key : {key1, key1, key1, key1, key2, key2, key2, key2, key2, key2, key2, key2, key1}) {
        press(key);
        diameters.push_back(stored("loupe.diameter").value());
    }
    EXPECT_EQ(diameters, (std::vector<double>{180, 140, 120, 120, 160, 200, 240, 280, 320, 360, 400, 400, 360}));
}

TEST_F(LoupeOverlayWindowKeys, ChangesTheZoomByItsStepAndKeepsTheSize)
{
    open();
    press(keyPeriod);
    EXPECT_EQ(stored("loupe.zoom"), 5);
    EXPECT_EQ(sampleSide(), 43);
    press(keyComma);
    press(keyComma);
    EXPECT_EQ(stored("loupe.zoom"), 3);
    EXPECT_EQ(sampleSide(), 73);
    EXPECT_EQ(loupe->frame(), (Rect{390, 162, 220, 248}));
    EXPECT_EQ(stored("loupe.diameter"), std::nullopt);
}

TEST_F(LoupeOverlayWindowKeys, KeepsTheZoomWithinItsBounds)
{
    openWith(std::nullopt, 2.0);
    press(keyComma);
    EXPECT_EQ(stored("loupe.zoom"), 1);
    press(keyComma);
    EXPECT_EQ(stored("loupe.zoom"), 1);
    for (int i = 0; i < 9; ++i)
        press(keyPeriod);
    EXPECT_EQ(stored("loupe.zoom"), 10);
    press(keyPeriod);
    EXPECT_EQ(stored("loupe.zoom"), 10);
}

TEST_F(LoupeOverlayWindowKeys, DoesNotSnapToAGrid)
{
    openWith(130.0, 2.5);
    press(keyPeriod);
    EXPECT_EQ(stored("loupe.zoom"), 3.5);
    press(key2);
    EXPECT_EQ(stored("loupe.diameter"), 170);
}

TEST_F(LoupeOverlayWindowKeys, TakesNoNoticeOfModifiersAndRepeats)
{
    open();
    press(key2, Platform::ModifierFlag::shift);
    EXPECT_EQ(stored("loupe.diameter"), 260);
    press(key2, Platform::ModifierFlag::control | Platform::ModifierFlag::command | Platform::ModifierFlag::capsLock, true);
    EXPECT_EQ(stored("loupe.diameter"), 300);
    press(keyPeriod, Platform::ModifierFlag::option, true);
    EXPECT_EQ(stored("loupe.zoom"), 5);
    press(keyEscape, Platform::ModifierFlag::shift);
    EXPECT_EQ(dismissals, 1);
}

TEST_F(LoupeOverlayWindowKeys, FollowsThePointerAndPresentsOnceAfterAChange)
{
    open();
    fake.mainLoop.runUntilIdle();
    fake.pointer.moveTo(Platform::Point{700, 400});
    press(key2);
    EXPECT_EQ(loupe->frame(), (Rect{570, 242, 260, 288}));
    EXPECT_EQ(fake.screenCapture.requests().size(), 2U);
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(window().presentCount(), 2);
    EXPECT_EQ(window().pictures()[0].rectangle, (Rect{0, 0, 260, 288}));
}

TEST_F(LoupeOverlayWindowKeys, GrowsWhereItIsWhileThePointerIsUnknown)
{
    open();
    fake.mainLoop.runUntilIdle();
    fake.pointer.moveTo(std::nullopt);
    press(key2);
    EXPECT_EQ(loupe->frame(), (Rect{390, 162, 260, 288}));
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(window().presentCount(), 2);
}

TEST_F(LoupeOverlayWindowKeys, CallsTheDismissHandlerOnEscapeAndStaysUpUntilItsOwnerActs)
{
    open();
    loupe->makeKeyAndOrderFront();
    press(keyEscape);
    EXPECT_EQ(dismissals, 1);
    EXPECT_TRUE(window().isShown());
}

TEST_F(LoupeOverlayWindowKeys, HasNoUseForAnyOtherKey)
{
    open();
    fake.mainLoop.runUntilIdle();
    fake.log.clear();
    for (std::uint16_t key = 0; key < 128; ++key) {
        if (key != key1 && key != key2 && key != keyComma && key != keyPeriod && key != keyEscape)
            press(key);
    }
    fake.mainLoop.runUntilIdle();
    EXPECT_TRUE(fake.log.lines().empty());
    EXPECT_EQ(dismissals, 0);
}

TEST_F(LoupeOverlayWindowTest, AllocatesNothingInATickOnceItsBuffersExist)
{
    open();
    loupe->makeKeyAndOrderFront();
    fake.log.setRecording(false);
    const auto tick = [this](int i) {
        fake.screenCapture.setColour(0xFF000000U + static_cast<std::uint32_t>(i));
        loupe->updateCursor({300.0 + i, 400.0 + i});
        fake.mainLoop.runUntilIdle();
    };
    for (int i = 0; i < 3; ++i)
        tick(i);
    const int presentedBefore = window().presentCount();
    const TestSupport::AllocationCounter counter;
    for (int i = 3; i < 103; ++i)
        tick(i);
    EXPECT_EQ(counter.count(), 0);
    EXPECT_EQ(window().presentCount(), presentedBefore + 100);
    EXPECT_EQ(window().pictures()[0].image.pixel(60, 60), 0xFF000066);
}

}  // namespace
}  // namespace Tarnwick

#include "Tarnwick/LoupeOverlayWindow.h"

#include <gtest/gtest.h>

#include <limits>

#include "AllocationCounter.h"
#include "Support/FakeSystem.h"

namespace Tarnwick {
namespace {

using Platform::DefaultsValue;
using Platform::Rect;

constexpr std::uint16_t key1 = 18;
constexpr std::uint16_t key2 = 19;
constexpr std::uint16_t keyComma = 43;
constexpr std::uint16_t keyPeriod = 47;
constexpr std::uint16_t keyEscape = 53;

class LoupeOverlayWindowTest : public testing::Test {
protected:
    LoupeOverlayWindowTest()
    {
        fake.screens.set({{"MAIN", {0, 0, 1512, 982}, 1}});
        fake.pointer.moveTo(Platform::Point{500, 300});
    }

    void open()
    {
        loupe = std::make_unique<LoupeOverlayWindow>(fake.system, fake.shapePainter, [this] { ++dismissals; });
    }

    void openWith(const std::optional<DefaultsValue>& diameter, const std::optional<DefaultsValue>& zoom)
    {
        if (diameter)
            fake.userDefaults.values()["loupe.diameter"] = *diameter;
        if (zoom)
            fake.userDefaults.values()["loupe.zoom"] = *zoom;
        open();
    }

    void press(std::uint16_t key, std::uint32_t modifiers = 0, bool isRepeat = false)
    {
        window().deliverKeyDown({.keyCode = key, .modifiers = modifiers, .isRepeat = isRepeat});
    }

    TestSupport::FakeOverlayWindow& window() { return fake.overlayWindows.last(); }
    const TestSupport::FakeScreenCapture::Request& lastCapture() { return fake.screenCapture.requests().back(); }
    double sampleSide() { return lastCapture().rectangles[0].width; }
    double sampleSideOf(double diameter, double zoom)
    {
        openWith(diameter, zoom);
        return sampleSide();
    }

    std::optional<double> stored(const std::string& key) { return fake.userDefaults.doubleValue(key); }

    TestSupport::FakeSystem fake;
    int dismissals = 0;
    std::unique_ptr<LoupeOverlayWindow> loupe;
};

using LoupeOverlayWindowKeys = LoupeOverlayWindowTest;
using LoupeOverlayWindowSettings = LoupeOverlayWindowTest;
using LoupeOverlayWindowSampleSide = LoupeOverlayWindowTest;
using LoupeOverlayWindowPlace = LoupeOverlayWindowTest;
using LoupeOverlayWindowDeathTest = LoupeOverlayWindowTest;

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

TEST_F(LoupeOverlayWindowSettings, AreNotWrittenByReading)
{
    open();
    loupe->updateCursor({10, 10});
    EXPECT_TRUE(fake.userDefaults.values().empty());
}

TEST_F(LoupeOverlayWindowSettings, AreKeptForTheNextLoupe)
{
    open();
    press(key2);
    press(keyPeriod);
    loupe.reset();
    open();
    EXPECT_EQ(loupe->frame().size(), (Platform::Size{260, 288}));
    EXPECT_EQ(sampleSide(), 51);
}

TEST_F(LoupeOverlayWindowSettings, AreReadAfreshAtEveryUse)
{
    open();
    fake.userDefaults.values()["loupe.zoom"] = 10.0;
    loupe->updateCursor({500, 300});
    EXPECT_EQ(sampleSide(), 21);
    fake.userDefaults.values()["loupe.diameter"] = 300.0;
    loupe->updateCursor({500, 300});
    EXPECT_EQ(sampleSide(), 29);
    EXPECT_EQ(loupe->frame(), (Rect{350, 122, 220, 248}));
    press(keyComma);
    EXPECT_EQ(loupe->frame(), (Rect{350, 122, 300, 328}));
}

TEST_F(LoupeOverlayWindowSettings, UseADiameterOffTheStepsAsItIs)
{
    openWith(130.0, std::nullopt);
    EXPECT_EQ(loupe->frame().size(), (Platform::Size{130, 158}));
    press(key1);
    EXPECT_EQ(stored("loupe.diameter"), 120);
    fake.userDefaults.values()["loupe.diameter"] = 130.0;
    press(key2);
    EXPECT_EQ(stored("loupe.diameter"), 170);
}

TEST_F(LoupeOverlayWindowSettings, UseASmallFractionalDiameterAsItIs)
{
    openWith(12.5, std::nullopt);
    EXPECT_EQ(loupe->frame(), (Rect{494, 266, 12.5, 40.5}));
    EXPECT_EQ(sampleSide(), 3);
    fake.mainLoop.runUntilIdle();
    ASSERT_EQ(window().pictures().size(), 1U);
    EXPECT_EQ(window().pictures()[0].image.width(), 13);
    EXPECT_EQ(window().pictures()[0].image.height(), 41);
    press(key2);
    EXPECT_EQ(stored("loupe.diameter"), 120);
}

TEST_F(LoupeOverlayWindowSettings, UseTheDefaultForWhatIsNoNumber)
{
    openWith(std::string("large"), std::string("strong"));
    EXPECT_EQ(loupe->frame().size(), (Platform::Size{220, 248}));
    EXPECT_EQ(sampleSide(), 55);
    press(key1);
    EXPECT_EQ(stored("loupe.diameter"), 180);
}

TEST_F(LoupeOverlayWindowSettings, TakeIntegersAndNumbersInTexts)
{
    openWith(std::int64_t{300}, std::string("3"));
    EXPECT_EQ(loupe->frame().size(), (Platform::Size{300, 328}));
    EXPECT_EQ(sampleSide(), 99);
}

TEST_F(LoupeOverlayWindowSettings, ShowNothingForANegativeOrZeroDiameter)
{
    for (const double diameter : {-50.0, 0.0, -1e18}) {
        openWith(diameter, std::nullopt);
        fake.mainLoop.runUntilIdle();
        EXPECT_EQ(window().presentCount(), 1) << diameter;
        EXPECT_TRUE(window().pictures().empty()) << diameter;
    }
}

TEST_F(LoupeOverlayWindowSettings, ComeBackFromANegativeDiameterByTheKeys)
{
    openWith(-50.0, std::nullopt);
    EXPECT_EQ(loupe->frame().size(), (Platform::Size{-50, -22}));
    EXPECT_EQ(sampleSide(), 3);
    press(key1);
    EXPECT_EQ(loupe->frame(), (Rect{440, 212, 120, 148}));
}

TEST_F(LoupeOverlayWindowSettings, ShowAHugeDiameterInLittleMemory)
{
    openWith(1e9, 1e8);
    EXPECT_EQ(loupe->frame().size(), (Platform::Size{1e9, 1e9 + 28}));
    EXPECT_EQ(sampleSide(), 9);
    fake.mainLoop.runUntilIdle();
    ASSERT_EQ(window().pictures().size(), 1U);
    EXPECT_LE(window().pictures()[0].image.pixels().size(), 2048U * 2048U);
    EXPECT_NEAR(window().pictures()[0].rectangle.width, 1e9, 1e6);
    press(key2);
    EXPECT_EQ(stored("loupe.diameter"), 400);
}

TEST_F(LoupeOverlayWindowSettings, KeepWorkingWhereNothingCanBeStored)
{
    open();
    fake.userDefaults.loseWrites(true);
    press(key2);
    EXPECT_EQ(loupe->frame().size(), (Platform::Size{220, 248}));
    EXPECT_EQ(sampleSide(), 55);
}

TEST_F(LoupeOverlayWindowSampleSide, IsTheLargestOddNumberWithinDiameterOverZoom)
{
    EXPECT_EQ(sampleSideOf(220.0, 4.0), 55);
    EXPECT_EQ(sampleSideOf(120.0, 10.0), 11);
    EXPECT_EQ(sampleSideOf(400.0, 1.0), 399);
    EXPECT_EQ(sampleSideOf(120.0, 4.0), 29);
    EXPECT_EQ(sampleSideOf(220.0, 3.0), 73);
    EXPECT_EQ(sampleSideOf(140.0, 10.0), 13);
}

TEST_F(LoupeOverlayWindowSampleSide, IsAtLeastThree)
{
    EXPECT_EQ(sampleSideOf(120.0, 50.0), 3);
    EXPECT_EQ(sampleSideOf(120.0, 30.0), 3);
    EXPECT_EQ(sampleSideOf(120.0, 24.0), 5);
    EXPECT_EQ(sampleSideOf(120.0, 1e300), 3);
    EXPECT_EQ(sampleSideOf(0.0, 4.0), 3);
    EXPECT_EQ(sampleSideOf(220.0, -4.0), 3);
    EXPECT_EQ(sampleSideOf(-0x1p63, 1.0), 3);
}

TEST_F(LoupeOverlayWindowDeathTest, StopsTheProgramOnAZoomOfZeroAndNamesIt)
{
    fake.userDefaults.values()["loupe.zoom"] = 0.0;
    EXPECT_DEATH(open(), "^tarnwick: fatal error: .*loupe.diameter 220.*loupe.zoom 0\n$");
    fake.userDefaults.values()["loupe.diameter"] = 0.0;
    EXPECT_DEATH(open(), "loupe.diameter 0, loupe.zoom 0\n");
}

TEST_F(LoupeOverlayWindowDeathTest, StopsTheProgramWhereTheSampleSideFitsNo64Bits)
{
    fake.userDefaults.values()["loupe.diameter"] = 0x1p63;
    fake.userDefaults.values()["loupe.zoom"] = 1.0;
    EXPECT_DEATH(open(), "loupe.diameter 9.22337e\\+18, loupe.zoom 1\n");
    fake.userDefaults.values()["loupe.diameter"] = -1e300;
    fake.userDefaults.values()["loupe.zoom"] = 1e-300;
    EXPECT_DEATH(open(), "loupe.diameter -1e\\+300, loupe.zoom 1e-300\n");
}

TEST_F(LoupeOverlayWindowDeathTest, StopsTheProgramOnceTheZoomBecomesZero)
{
    open();
    fake.userDefaults.values()["loupe.zoom"] = std::int64_t{0};
    EXPECT_DEATH(loupe->updateCursor({0, 0}), "loupe.zoom 0\n");
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
    long allocations = 0;
    {
        const AllocationCounter counter;
        for (int i = 3; i < 103; ++i)
            tick(i);
        allocations = counter.count();
    }
    EXPECT_EQ(allocations, 0);
    EXPECT_EQ(window().presentCount(), presentedBefore + 100);
    EXPECT_EQ(window().pictures()[0].image.pixel(60, 60), 0xFF000066);
}

}  // namespace
}  // namespace Tarnwick

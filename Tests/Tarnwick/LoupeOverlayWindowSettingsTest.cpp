// What stored diameters and zooms do, odd ones included.
#include "LoupeOverlayWindowFixture.h"

namespace Tarnwick {
namespace {

using Platform::Rect;

using LoupeOverlayWindowSettings = LoupeOverlayWindowTest;
using LoupeOverlayWindowSampleSide = LoupeOverlayWindowTest;
using LoupeOverlayWindowDeathTest = LoupeOverlayWindowTest;

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

}  // namespace
}  // namespace Tarnwick

#include "Tarnwick/LoupeView.h"

#include <gtest/gtest.h>

#include "Support/DrawnImage.h"
#include "Support/FakeSystem.h"
#include "Support/ImageOfRows.h"

namespace Tarnwick {
namespace {

using Platform::Image;
using Platform::Rect;

constexpr std::int64_t windowNumber = 7;
constexpr std::uint32_t backdrop = 0x26000000;

class NoDelegate final : public Platform::OverlayWindowDelegate {
public:
    void keyDown(const Platform::KeyEvent&) override { }
    void dismissRequested() override { }
};

Image plain(int width, int height, std::uint32_t colour)
{
    Image image(width, height);
    for (auto& pixel : image.pixels())
        pixel = colour;
    return image;
}

// A view in a window of the default size on a screen of 1512 x 982.
class LoupeViewTest : public testing::Test {
protected:
    LoupeViewTest()
    {
        fake.screens.set({{"MAIN", {0, 0, 1512, 982}, 1}});
        makeView();
    }
    ~LoupeViewTest() override { view->setWindow(nullptr); }

    void makeView(Rect frame = {390, 163, 220, 248})
    {
        if (view != nullptr)
            view->setWindow(nullptr);
        window = fake.overlayWindows.makeOverlayWindow({.frame = frame, .hasShadow = true}, delegate);
        view = std::make_shared<LoupeView>(fake.mainLoop, fake.screens, fake.screenCapture, fake.shapePainter);
        view->setWindow(window.get());
    }

    Rect rectangleCapturedAt(Platform::Point centre, double side)
    {
        view->refresh(centre, side, windowNumber);
        return fake.screenCapture.requests().back().rectangles.at(0);
    }

    // A device pixel that the sample's top left quarter fills.
    std::uint32_t shownPixel() { return shown().pictures().at(0).image.pixel(60, 60); }

    void refreshAndRun()
    {
        view->refresh({500, 301}, 55, windowNumber);
        fake.mainLoop.runUntilIdle();
    }

    TestSupport::FakeOverlayWindow& shown() { return fake.overlayWindows.last(); }

    TestSupport::FakeSystem fake;
    NoDelegate delegate;
    std::unique_ptr<Platform::OverlayWindow> window;
    std::shared_ptr<LoupeView> view;
};

using LoupeViewCapture = LoupeViewTest;
using LoupeViewDisplay = LoupeViewTest;
using LoupeViewDrawing = LoupeViewTest;
using LoupeViewDeathTest = LoupeViewTest;

TEST_F(LoupeViewCapture, StartsWithoutAnImage) { EXPECT_EQ(view->sampledImage(), nullptr); }

TEST_F(LoupeViewCapture, TakesTheSquareAroundTheCentreInDevicePixelsAtOnce)
{
    view->refresh({500, 301}, 55, windowNumber);
    ASSERT_EQ(fake.screenCapture.requests().size(), 1U);
    const auto& request = fake.screenCapture.requests().front();
    EXPECT_EQ(request.windowNumber, 7U);
    EXPECT_EQ(request.resolution, Platform::CaptureResolution::best);
    EXPECT_EQ(request.rectangles, (std::vector<Rect>{{473, 654, 55, 55}}));
    ASSERT_NE(view->sampledImage(), nullptr);
    EXPECT_EQ(view->sampledImage()->width(), 55);
}

TEST_F(LoupeViewCapture, TakesOnePixelOnEachSideOfTheCentreAtLeast) { EXPECT_EQ(rectangleCapturedAt({500, 301}, 3), (Rect{499, 680, 3, 3})); }

TEST_F(LoupeViewCapture, RoundsToWholePointsHalvesAwayFromZero)
{
    EXPECT_EQ(rectangleCapturedAt({500.5, 301}, 3).x, 500);
    EXPECT_EQ(rectangleCapturedAt({500.4, 301}, 3).x, 499);
    EXPECT_EQ(rectangleCapturedAt({-9.5, 301}, 3).x, -11);
    EXPECT_EQ(rectangleCapturedAt({500, 300.5}, 3).y, 681);
    EXPECT_EQ(rectangleCapturedAt({500, 990.5}, 3).y, -10);
}

TEST_F(LoupeViewCapture, TakesThePrimaryHeightAsZeroWithoutScreens)
{
    fake.screens.set({});
    EXPECT_EQ(rectangleCapturedAt({500, 301}, 55), (Rect{473, -328, 55, 55}));
    EXPECT_EQ(rectangleCapturedAt({500, 300.5}, 55), (Rect{473, -328, 55, 55}));
}

TEST_F(LoupeViewCapture, MeasuresFromThePrimaryScreensTop)
{
    fake.screens.set({{"MAIN", {0, 0, 1512, 982}, 2}, {"SIDE", {1512, -300, 1920, 1080}, 1}}, 1);
    EXPECT_EQ(rectangleCapturedAt({2000, -200}, 55), (Rect{1973, 1155, 55, 55}));
}

TEST_F(LoupeViewCapture, IsWholeNearTheEdgesOfTheScreens)
{
    EXPECT_EQ(rectangleCapturedAt({0, 982}, 399), (Rect{-199, -199, 399, 399}));
    EXPECT_EQ(rectangleCapturedAt({-5000, 0}, 55), (Rect{-5027, 955, 55, 55}));
}

TEST_F(LoupeViewCapture, EndsWithTheScreensWhereTheSquareIsHuge)
{
    EXPECT_EQ(rectangleCapturedAt({500, 301}, 22'000'001), (Rect{0, 0, 1512, 982}));
    EXPECT_EQ(rectangleCapturedAt({500, 301}, 1101), (Rect{0, 131, 1051, 851}));
    fake.screens.set({});
    EXPECT_EQ(rectangleCapturedAt({500, 301}, 22'000'001).width, 0);
}

TEST_F(LoupeViewCapture, LeavesNoImageWhereItFails)
{
    view->refresh({500, 301}, 55, windowNumber);
    fake.screenCapture.setColour(std::nullopt);
    view->refresh({500, 301}, 55, windowNumber);
    EXPECT_EQ(view->sampledImage(), nullptr);
    fake.screenCapture.setColour(0xFF112233);
    view->refresh({500, 301}, 55, windowNumber);
    ASSERT_NE(view->sampledImage(), nullptr);
    EXPECT_EQ(TestSupport::imageOf(*view->sampledImage()).pixel(0, 0), 0xFF112233U);
}

TEST_F(LoupeViewCapture, TakesTheAnswerInRowsWhereItComesSo)
{
    fake.screenCapture.setColour(0xFF112233);
    refreshAndRun();
    const auto inAnImage = shown().pictures().at(0).image;
    fake.screenCapture.setAnswersInRows(true);
    refreshAndRun();
    EXPECT_EQ(TestSupport::imageOf(*view->sampledImage()), plain(55, 55, 0xFF112233));
    EXPECT_EQ(shown().pictures().at(0).image, inAnImage);
    fake.screenCapture.setColour(0xFF445566);
    fake.screenCapture.setAnswersInRows(false);
    refreshAndRun();
    EXPECT_EQ(TestSupport::imageOf(*view->sampledImage()), plain(55, 55, 0xFF445566));
    fake.screenCapture.setAnswersInRows(true);
    refreshAndRun();
    fake.screenCapture.setColour(std::nullopt);
    refreshAndRun();
    EXPECT_EQ(view->sampledImage(), nullptr);
}

TEST_F(LoupeViewDeathTest, StopsTheProgramOnAWindowNumberOutside32Bits)
{
    EXPECT_DEATH(view->refresh({0, 0}, 3, -1), "fatal error: .*window number.*: -1\n");
    EXPECT_DEATH(view->refresh({0, 0}, 3, 4294967296), "fatal error: .*window number.*: 4294967296\n");
    view->refresh({0, 0}, 3, 4294967295);
    EXPECT_EQ(fake.screenCapture.requests().back().windowNumber, 4294967295U);
}

TEST_F(LoupeViewDisplay, PresentsInALaterTurnOnceForAllCalls)
{
    view->setNeedsDisplay();
    view->refresh({500, 301}, 55, windowNumber);
    view->refresh({501, 301}, 55, windowNumber);
    EXPECT_EQ(shown().presentCount(), 0);
    EXPECT_EQ(fake.mainLoop.runTurn(), 1);
    EXPECT_EQ(shown().presentCount(), 1);
    refreshAndRun();
    EXPECT_EQ(shown().presentCount(), 2);
}

TEST_F(LoupeViewDisplay, EndsWithTheView)
{
    view->setNeedsDisplay();
    view.reset();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(shown().presentCount(), 0);
    view = std::make_shared<LoupeView>(fake.mainLoop, fake.screens, fake.screenCapture, fake.shapePainter);
}

TEST_F(LoupeViewDisplay, DoesNothingWithoutAWindow)
{
    view->setNeedsDisplay();
    view->setWindow(nullptr);
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(shown().presentCount(), 0);
    EXPECT_FALSE(view->draw());
}

TEST_F(LoupeViewDisplay, PresentsOnePictureOfTheWholeView)
{
    fake.screenCapture.setColour(0xFF336699);
    refreshAndRun();
    ASSERT_EQ(shown().pictures().size(), 1U);
    EXPECT_EQ(shown().pictures()[0].rectangle, (Rect{0, 0, 220, 248}));
    EXPECT_EQ(shownPixel(), 0xFF336699U);
}

TEST_F(LoupeViewDisplay, PresentsAnEmptyViewAsNothing)
{
    makeView({0, 0, -50, -22});
    view->setNeedsDisplay();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(shown().presentCount(), 1);
    EXPECT_TRUE(shown().pictures().empty());
}

TEST_F(LoupeViewDrawing, FollowsWhatIsCaptured)
{
    std::vector<std::uint32_t> shownPixels;
    for (const auto colour :
        std::vector<std::optional<std::uint32_t>>{0xFF000001, 0xFF000001, 0xFF000002, std::nullopt, std::nullopt, 0xFF000002, 0xFF000001}) {
        fake.screenCapture.setColour(colour);
        refreshAndRun();
        shownPixels.push_back(shownPixel());
    }
    EXPECT_EQ(shownPixels, (std::vector<std::uint32_t>{0xFF000001, 0xFF000001, 0xFF000002, backdrop, backdrop, 0xFF000002, 0xFF000001}));
}

TEST_F(LoupeViewDrawing, ShowsTheLastOfTwoCapturesOfOneTurn)
{
    for (const auto colour : {0xFF000001U, 0xFF000002U, 0xFF000001U}) {
        fake.screenCapture.setColour(colour);
        view->refresh({500, 301}, 55, windowNumber);
    }
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(shownPixel(), 0xFF000001U);
    fake.screenCapture.setColour(0xFF000002);
    view->refresh({500, 301}, 55, windowNumber);
    view->refresh({500, 301}, 55, windowNumber);
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(shownPixel(), 0xFF000002U);
}

TEST_F(LoupeViewDrawing, DrawsTheSameCaptureAgainAtANewSizeAndScale)
{
    fake.screenCapture.setColour(0xFF336699);
    refreshAndRun();
    window->setFrame({390, 163, 260, 288});
    refreshAndRun();
    EXPECT_EQ(shown().pictures()[0].image.width(), 260);
    EXPECT_EQ(shownPixel(), 0xFF336699U);
    fake.screens.set({{"MAIN", {0, 0, 1512, 982}, 2}});
    refreshAndRun();
    EXPECT_EQ(shown().pictures()[0].image.width(), 520);
    EXPECT_EQ(shown().pictures()[0].image.pixel(120, 120), 0xFF336699U);
}

TEST_F(LoupeViewDrawing, UsesTheScaleOfTheScreenThatTheWindowsCentreLiesOn)
{
    fake.screens.set({{"MAIN", {0, 0, 1512, 982}, 1}, {"SIDE", {1512, 0, 1512, 982}, 2}});
    const auto widthAt = [this](double x) {
        window->setFrame({x, 400, 220, 248});
        return view->draw()->source->width();
    };
    EXPECT_EQ(widthAt(1401), 220);
    EXPECT_EQ(widthAt(1403), 440);
    EXPECT_EQ(widthAt(5000), 440);
    fake.screens.set({});
    EXPECT_EQ(widthAt(0), 220);
}

TEST_F(LoupeViewDrawing, StretchesNoDevicePixelWhereTheWindowsEdgesFallBetweenTwo)
{
    fake.screens.set({{"MAIN", {0, 0, 1512, 982}, 1.25}});
    makeView({401, 301, 130, 158});
    const auto picture = view->draw();
    EXPECT_EQ(picture->source->width(), 163);
    EXPECT_EQ(picture->source->height(), 198);
    EXPECT_DOUBLE_EQ(picture->rectangle.width, 130.4);
    EXPECT_DOUBLE_EQ(picture->rectangle.height, 158.4);
    EXPECT_DOUBLE_EQ(picture->rectangle.y + picture->rectangle.height, 158);
}

TEST_F(LoupeViewDrawing, ShowsTheDevicePixelsOfADenseScreen)
{
    fake.screens.set({{"MAIN", {0, 0, 1512, 982}, 2}});
    auto image = plain(6, 6, 0xFF000000);
    image.pixels()[2 * 6 + 1] = 0xFFFF0000;
    fake.screenCapture.setAnswer({499, 680, 3, 3}, image);
    view->refresh({500, 301}, 3, windowNumber);
    const auto drawn = TestSupport::drawn(*view->draw()->source);
    // 436 device pixels for 6: the red one is at 74.67 to 147.33, 147.33 to 220.
    EXPECT_EQ(drawn.pixel(75, 190), 0xFFFF0000U);
    EXPECT_EQ(drawn.pixel(146, 148), 0xFFFF0000U);
    EXPECT_EQ(drawn.pixel(147, 190), 0xFF000000U);
    EXPECT_EQ(drawn.pixel(74, 190), 0xFF000000U);
    EXPECT_EQ(drawn.pixel(100, 146), 0xFF000000U);
}

TEST_F(LoupeViewDrawing, ShowsAHugeSquareInItsPlace)
{
    fake.screens.set({{"MAIN", {0, 0, 1512, 982}, 1}});
    fake.screenCapture.setAnswer({0, 0, 1512, 982}, plain(1512, 982, 0xFF00AA00));
    view->refresh({756, 491}, 3025, windowNumber);
    auto drawn = TestSupport::drawn(*view->draw()->source);
    // Half as wide as the circle's 218 points, a third as high.
    EXPECT_EQ(drawn.pixel(54, 100), backdrop);
    EXPECT_EQ(drawn.pixel(56, 100), 0xFF00AA00U);
    EXPECT_EQ(drawn.pixel(163, 100), 0xFF00AA00U);
    EXPECT_EQ(drawn.pixel(165, 100), backdrop);
    EXPECT_EQ(drawn.pixel(100, 73), backdrop);
    EXPECT_EQ(drawn.pixel(100, 76), 0xFF00AA00U);

    view->refresh({1056, 491}, 3025, windowNumber);
    drawn = TestSupport::drawn(*view->draw()->source);
    EXPECT_EQ(drawn.pixel(54, 100), 0xFF00AA00U);
    EXPECT_EQ(drawn.pixel(141, 100), 0xFF00AA00U);
    EXPECT_EQ(drawn.pixel(144, 100), backdrop);
}

class StillLoupeViewDisplay : public LoupeViewTest {
protected:
    StillLoupeViewDisplay()
    {
        refreshAndRun();
        fake.screenCapture.setStill(true);
    }
};

TEST_F(StillLoupeViewDisplay, PresentsNothingAgain)
{
    for (int i = 0; i < 10; ++i)
        refreshAndRun();
    EXPECT_EQ(shown().presentCount(), 1);
    EXPECT_NE(view->sampledImage(), nullptr);
}

TEST_F(StillLoupeViewDisplay, PresentsWhatIsNew)
{
    refreshAndRun();
    fake.screenCapture.setStill(false);
    fake.screenCapture.setColour(0xFF336699);
    refreshAndRun();
    EXPECT_EQ(shown().presentCount(), 2);
    EXPECT_EQ(shownPixel(), 0xFF336699);
}

TEST_F(StillLoupeViewDisplay, PresentsTheSameInAnotherFrame)
{
    fake.screenCapture.setColour(0xFF336699);
    window->setFrame({390, 163, 260, 288});
    refreshAndRun();
    EXPECT_EQ(shown().presentCount(), 2);
    EXPECT_EQ(shownPixel(), 0xFF000000);
    refreshAndRun();
    EXPECT_EQ(shown().presentCount(), 2);
}

TEST_F(StillLoupeViewDisplay, PresentsTheSameAtAnotherScale)
{
    fake.screens.set({{"MAIN", {0, 0, 1512, 982}, 2}});
    refreshAndRun();
    EXPECT_EQ(shown().presentCount(), 2);
}

TEST_F(StillLoupeViewDisplay, PresentsAgainWhereItIsTold)
{
    view->setNeedsDisplay();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(shown().presentCount(), 2);
}

}  // namespace
}  // namespace Tarnwick

// When the view presents what it draws.
#include "Tarnwick/CrosshairViewFixture.h"

namespace Tarnwick {
namespace {

using Platform::Rect;

class CrosshairViewDisplay : public CrosshairViewFixture { };

TEST_F(CrosshairViewDisplay, DrawsNothingWithoutAWindow)
{
    view->setWindow(nullptr);
    view->setNeedsDisplay();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(shown().presentCount(), 0);
}

TEST_F(CrosshairViewDisplay, PresentsOnceForAllMarksOfATurn)
{
    view->setNeedsDisplay();
    view->setNeedsDisplay();
    EXPECT_EQ(shown().presentCount(), 0);
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(shown().presentCount(), 1);
    view->setNeedsDisplay();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(shown().presentCount(), 2);
}

TEST_F(CrosshairViewDisplay, WaitsForTheStripsOfACaptureThatIsUnderWay)
{
    tick({100, 200});
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(shown().presentCount(), 0);
    finishCapture();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(shown().presentCount(), 1);
    ASSERT_EQ(shown().pictures().size(), 2U);
    EXPECT_TRUE(shown().pictures()[0].hasImage);
    EXPECT_EQ(shown().pictures()[0].rectangle, (Rect{0, 199.5, 1920, 1}));
}

TEST_F(CrosshairViewDisplay, PresentsOncePerTickWhileCapturesKeepUp)
{
    for (int i = 0; i < 10; ++i) {
        tick({100.0 + i, 200});
        fake.mainLoop.runUntilIdle();
        finishCapture();
        fake.mainLoop.runUntilIdle();
    }
    EXPECT_EQ(shown().presentCount(), 10);
    EXPECT_EQ(shown().pictures()[1].rectangle, (Rect{108.5, 0, 1, 1080}));
}

TEST_F(CrosshairViewDisplay, ShowsDarkLinesFirstWhenTheFirstCaptureIsLateByATick)
{
    tick({100, 200});
    fake.mainLoop.runUntilIdle();
    tick({110, 200});
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(shown().presentCount(), 1);
    EXPECT_FALSE(shown().pictures()[0].hasImage);
    EXPECT_EQ(shown().pictures()[1].rectangle, (Rect{109.5, 0, 1, 1080}));
    finishCapture();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(shown().presentCount(), 2);
    EXPECT_TRUE(shown().pictures()[0].hasImage);
}

TEST_F(CrosshairViewDisplay, MovesTheFormerStripsWhenACaptureTakesLongerThanATick)
{
    tick({100, 200});
    finishCapture();
    fake.mainLoop.runUntilIdle();
    tick({110, 200});
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(shown().presentCount(), 1);
    tick({120, 200});
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(shown().presentCount(), 2);
    EXPECT_EQ(shown().pictures()[1].rectangle, (Rect{119.5, 0, 1, 1080}));
}

TEST_F(CrosshairViewDisplay, WaitsAgainForTheCaptureAfterASlowOne)
{
    tick({100, 200});
    tick({110, 200});
    finishCapture();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(shown().presentCount(), 2);
    tick({120, 200});
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(shown().presentCount(), 2);
}

// Each capture ends just before the next tick, so there is one under way at every display.
TEST_F(CrosshairViewDisplay, IsNotPutOffForEverByCapturesThatEndJustBeforeATick)
{
    tick({100, 200});
    for (int i = 1; i <= 10; ++i) {
        finishCapture();
        fake.mainLoop.runTurn();
        tick({100.0 + i, 200});
        fake.mainLoop.runTurn();
        EXPECT_EQ(shown().presentCount(), i);
    }
}

TEST_F(CrosshairViewDisplay, ShowsTheDarkLinesAfterACaptureThatWasRefused)
{
    fake.screenCapture.setColour(std::nullopt);
    tick({100, 200});
    finishCapture();
    fake.mainLoop.runUntilIdle();
    ASSERT_EQ(shown().pictures().size(), 2U);
    EXPECT_FALSE(shown().pictures()[0].hasImage);
    EXPECT_EQ(shown().pictures()[0].colour, 0xD9000000);
}

class StillCrosshairViewDisplay : public CrosshairViewFixture {
protected:
    StillCrosshairViewDisplay()
    {
        runTick({100, 200});
        fake.screenCapture.setStill(true);
    }

    void runTick(Platform::Point mouse)
    {
        tick(mouse);
        fake.mainLoop.runUntilIdle();
        finishCapture();
        fake.mainLoop.runUntilIdle();
    }
};

TEST_F(StillCrosshairViewDisplay, PresentsNothingAgain)
{
    for (int i = 0; i < 10; ++i)
        runTick({100, 200});
    EXPECT_EQ(shown().presentCount(), 1);
    EXPECT_FALSE(view->captureInFlight());
}

TEST_F(StillCrosshairViewDisplay, KeepsTheStripsThatItHas)
{
    const auto pixel = view->hStrip()->pixel(0, 0);
    ASSERT_EQ(pixel, 0xFFFFFFFF);
    for (int i = 0; i < 3; ++i)
        runTick({100, 200});
    ASSERT_NE(view->hStrip(), nullptr);
    ASSERT_NE(view->vStrip(), nullptr);
    EXPECT_EQ(view->hStrip()->pixel(0, 0), pixel);
    EXPECT_EQ(view->vStrip()->pixel(0, 0), pixel);
}

TEST_F(StillCrosshairViewDisplay, PresentsWhatIsNew)
{
    runTick({100, 200});
    fake.screenCapture.setStill(false);
    fake.screenCapture.setColour(0xFF336699);
    runTick({100, 200});
    EXPECT_EQ(shown().presentCount(), 2);
    EXPECT_EQ(view->hStrip()->pixel(0, 0), 0xFFCC9966);
}

// Half a point further lies on the same strip.
TEST_F(StillCrosshairViewDisplay, MovesTheLinesWithinTheStrip)
{
    runTick({100.4, 200});
    EXPECT_EQ(shown().presentCount(), 2);
    EXPECT_EQ(shown().pictures()[1].rectangle, (Rect{99.9, 0, 1, 1080}));
    runTick({100.4, 200});
    EXPECT_EQ(shown().presentCount(), 2);
}

TEST_F(StillCrosshairViewDisplay, PresentsAgainInAFrameThatMoved)
{
    window->setFrame({10, 0, 1920, 1080});
    runTick({100, 200});
    EXPECT_EQ(shown().presentCount(), 2);
}

TEST_F(StillCrosshairViewDisplay, PresentsAgainWhereItIsTold)
{
    view->setNeedsDisplay();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(shown().presentCount(), 2);
}

}  // namespace
}  // namespace Tarnwick

#include "Tarnwick/CrosshairViewFixture.h"

#include "Platform/Posix/ThreadSerialQueue.h"
#include "Support/WaitUntil.h"

namespace Tarnwick {
namespace {

using Platform::Image;
using Platform::Rect;

Image plain(int width, int height, std::uint32_t colour)
{
    Image image(width, height);
    for (auto& pixel : image.pixels())
        pixel = colour;
    return image;
}

using CrosshairViewCapture = CrosshairViewFixture;
using CrosshairViewDrawing = CrosshairViewFixture;
using CrosshairViewDeathTest = CrosshairViewFixture;

TEST_F(CrosshairViewCapture, StartsWithNoStripsAndNoCapture)
{
    EXPECT_EQ(view->mouse(), (Platform::Point{0, 0}));
    EXPECT_EQ(view->hStrip(), nullptr);
    EXPECT_EQ(view->vStrip(), nullptr);
    EXPECT_FALSE(view->captureInFlight());
}

TEST_F(CrosshairViewCapture, TakesTheTwoStripsThroughThePointerInOneCall)
{
    view->setMouse({100, 200});
    view->scheduleStripRefresh(windowNumber);
    EXPECT_TRUE(view->captureInFlight());
    EXPECT_TRUE(fake.screenCapture.requests().empty());
    finishCapture();
    ASSERT_EQ(fake.screenCapture.requests().size(), 1U);
    const auto& request = fake.screenCapture.requests().front();
    EXPECT_EQ(request.windowNumber, 7U);
    EXPECT_EQ(request.resolution, Platform::CaptureResolution::nominal);
    EXPECT_EQ(request.rectangles, (std::vector<Rect>{{0, 879.5, 1920, 1}, {99.5, 0, 1, 1080}}));
}

TEST_F(CrosshairViewCapture, RoundsThePointerToWholePointsHalvesAwayFromZero)
{
    EXPECT_EQ(rectanglesCapturedAt({10.5, 0})[1].x, 10.5);
    EXPECT_EQ(rectanglesCapturedAt({-10.5, 0})[1].x, -11.5);
    EXPECT_EQ(rectanglesCapturedAt({10.4, 0})[1].x, 9.5);
    EXPECT_EQ(rectanglesCapturedAt({0, 100.5})[0].y, 979.5);
    EXPECT_EQ(rectanglesCapturedAt({0, 1090.5})[0].y, -11.5);
}

TEST_F(CrosshairViewCapture, TakesThePrimaryHeightAsZeroWithoutScreens)
{
    fake.screens.set({});
    EXPECT_EQ(rectanglesCapturedAt({30, 20}), (std::vector<Rect>{{0, -20.5, 1920, 1}, {29.5, -1080, 1, 1080}}));
    EXPECT_EQ(rectanglesCapturedAt({30, 10.5})[0].y, -11.5);
}

TEST_F(CrosshairViewCapture, MeasuresFromThePrimaryScreenWhereverItsWindowLies)
{
    fake.screens.set({{"MAIN", {0, 0, 1920, 1080}, 1}, {"SIDE", {1920, 56, 1280, 1024}, 1}}, 1);
    window->setFrame({1920, 56, 1280, 1024});
    EXPECT_EQ(rectanglesCapturedAt({100, 200}), (std::vector<Rect>{{0, 879.5, 1280, 1}, {99.5, 56, 1, 1024}}));
}

TEST_F(CrosshairViewCapture, DropsRequestsWhileOneIsUnderWay)
{
    view->setMouse({100, 200});
    view->scheduleStripRefresh(windowNumber);
    view->setMouse({300, 400});
    view->scheduleStripRefresh(windowNumber);
    EXPECT_EQ(fake.serialQueues.waitingTasks(), 1);
    finishCapture();
    fake.mainLoop.runUntilIdle();
    ASSERT_EQ(fake.screenCapture.requests().size(), 1U);
    EXPECT_EQ(fake.screenCapture.requests()[0].rectangles[1].x, 99.5);
    EXPECT_EQ(fake.serialQueues.waitingTasks(), 0);
    EXPECT_EQ(view->mouse(), (Platform::Point{300, 400}));
}

TEST_F(CrosshairViewCapture, StaysUnderWayUntilTheResultsAreStored)
{
    view->scheduleStripRefresh(windowNumber);
    finishCapture();
    EXPECT_TRUE(view->captureInFlight());
    EXPECT_EQ(view->hStrip(), nullptr);
    view->scheduleStripRefresh(windowNumber);
    EXPECT_EQ(fake.serialQueues.waitingTasks(), 0);
    fake.mainLoop.runTurn();
    EXPECT_FALSE(view->captureInFlight());
    view->scheduleStripRefresh(windowNumber);
    EXPECT_EQ(fake.serialQueues.waitingTasks(), 1);
}

TEST_F(CrosshairViewCapture, InvertsTheColoursOfBothStrips)
{
    fake.screenCapture.setAnswer({0, 879.5, 1920, 1}, plain(1920, 1, 0xFF336699));
    fake.screenCapture.setAnswer({99.5, 0, 1, 1080}, plain(1, 1080, 0xFF000000));
    captureAt({100, 200});
    ASSERT_NE(view->hStrip(), nullptr);
    ASSERT_NE(view->vStrip(), nullptr);
    EXPECT_EQ(*view->hStrip(), plain(1920, 1, 0xFFCC9966));
    EXPECT_EQ(*view->vStrip(), plain(1, 1080, 0xFFFFFFFF));
}

TEST_F(CrosshairViewCapture, ReplacesBothStripsInOneStep)
{
    fake.screenCapture.setColour(0xFF000000);
    captureAt({100, 200});
    fake.screenCapture.setColour(0xFFFFFFFF);
    view->scheduleStripRefresh(windowNumber);
    finishCapture();
    EXPECT_EQ(view->hStrip()->pixel(0, 0), 0xFFFFFFFF);
    EXPECT_EQ(view->vStrip()->pixel(0, 0), 0xFFFFFFFF);
    EXPECT_EQ(fake.mainLoop.runTurn(), 1);
    EXPECT_EQ(view->hStrip()->pixel(0, 0), 0xFF000000);
    EXPECT_EQ(view->vStrip()->pixel(0, 0), 0xFF000000);
}

TEST_F(CrosshairViewCapture, ClearsAStripThatCouldNotBeTaken)
{
    captureAt({100, 200});
    ASSERT_NE(view->hStrip(), nullptr);
    fake.screenCapture.setAnswer({0, 879.5, 1920, 1}, std::nullopt);
    captureAt({100, 200});
    EXPECT_EQ(view->hStrip(), nullptr);
    EXPECT_NE(view->vStrip(), nullptr);
}

TEST_F(CrosshairViewCapture, HasNoStripsWithoutThePermissionToCapture)
{
    fake.screenCapture.setColour(std::nullopt);
    captureAt({100, 200});
    EXPECT_EQ(view->hStrip(), nullptr);
    EXPECT_EQ(view->vStrip(), nullptr);
    EXPECT_FALSE(view->captureInFlight());
}

TEST_F(CrosshairViewCapture, DiscardsTheResultsOfAViewThatIsGone)
{
    view->scheduleStripRefresh(windowNumber);
    const std::weak_ptr<CrosshairView> observer = view;
    view.reset();
    EXPECT_TRUE(observer.expired());
    finishCapture();
    EXPECT_EQ(fake.mainLoop.runTurn(), 1);
    EXPECT_EQ(shown().presentCount(), 0);
    view = makeView();
}

TEST_F(CrosshairViewCapture, DiscardsTheResultsOfAViewThatGoesBeforeTheStoreStep)
{
    view->scheduleStripRefresh(windowNumber);
    finishCapture();
    const std::weak_ptr<CrosshairView> observer = view;
    view.reset();
    EXPECT_TRUE(observer.expired());
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(shown().presentCount(), 0);
    view = makeView();
}

TEST_F(CrosshairViewCapture, SharesOneQueueThatTheFirstRequestMakes)
{
    const auto other = makeView();
    EXPECT_EQ(fake.log.count("serialQueues.make tarnwick.capture"), 0);
    view->scheduleStripRefresh(windowNumber);
    other->scheduleStripRefresh(windowNumber);
    EXPECT_EQ(fake.log.count("serialQueues.make tarnwick.capture"), 1);
    EXPECT_EQ(fake.serialQueues.waitingTasks(), 2);
}

TEST_F(CrosshairViewCapture, TakesEveryUnsigned32BitWindowNumber)
{
    view->scheduleStripRefresh(0);
    finishCapture();
    fake.mainLoop.runUntilIdle();
    view->scheduleStripRefresh(4294967295);
    finishCapture();
    EXPECT_EQ(fake.screenCapture.requests()[0].windowNumber, 0U);
    EXPECT_EQ(fake.screenCapture.requests()[1].windowNumber, 4294967295U);
}

TEST_F(CrosshairViewDeathTest, StopsTheProgramOnAWindowNumberOutside32Bits)
{
    EXPECT_DEATH(view->scheduleStripRefresh(-1), "fatal error: .*window number.*: -1\n");
    EXPECT_DEATH(view->scheduleStripRefresh(4294967296), "fatal error: .*window number.*: 4294967296\n");
}

TEST_F(CrosshairViewCapture, WorksAcrossThreads)
{
    Platform::Posix::ThreadSerialQueues threads;
    CaptureQueue threadQueue(threads);
    const auto threadView = std::make_shared<CrosshairView>(fake.mainLoop, fake.screens, fake.screenCapture, threadQueue);
    for (int i = 0; i < 50; ++i) {
        threadView->scheduleStripRefresh(windowNumber);
        ASSERT_TRUE(TestSupport::waitUntil([&] { return fake.mainLoop.waitingTasks() > 0; }));
        fake.mainLoop.runUntilIdle();
        ASSERT_FALSE(threadView->captureInFlight());
    }
    EXPECT_EQ(fake.screenCapture.requests().size(), 50U);
}

TEST_F(CrosshairViewDrawing, DrawsTheStripsThroughThePointerVerticalAboveHorizontal)
{
    window->setFrame({0, 0, 1920, 1080});
    captureAt({300.25, 100.0});
    const auto drawing = view->draw();
    ASSERT_EQ(drawing.pictures().size(), 2U);
    EXPECT_EQ(drawing.pictures()[0].rectangle, (Rect{0, 99.5, 1920, 1}));
    EXPECT_EQ(drawing.pictures()[0].image, view->hStrip());
    EXPECT_EQ(drawing.pictures()[1].rectangle, (Rect{299.75, 0, 1, 1080}));
    EXPECT_EQ(drawing.pictures()[1].image, view->vStrip());
}

TEST_F(CrosshairViewDrawing, FollowsThePointerWithStripsOfBefore)
{
    captureAt({100, 200});
    view->setMouse({110, 220.5});
    const auto drawing = view->draw();
    EXPECT_EQ(drawing.pictures()[0].rectangle, (Rect{0, 220, 1920, 1}));
    EXPECT_EQ(drawing.pictures()[1].rectangle, (Rect{109.5, 0, 1, 1080}));
}

TEST_F(CrosshairViewDrawing, DrawsDarkLinesWithoutAnyStrip)
{
    view->setMouse({300, 100});
    const auto drawing = view->draw();
    ASSERT_EQ(drawing.pictures().size(), 2U);
    EXPECT_EQ(drawing.pictures()[0].rectangle, (Rect{0, 99.5, 1920, 1}));
    EXPECT_EQ(drawing.pictures()[1].rectangle, (Rect{299.5, 0, 1, 1080}));
    for (const auto& picture : drawing.pictures()) {
        EXPECT_EQ(picture.image, nullptr);
        EXPECT_EQ(picture.colour, 0xD9000000);
    }
}

TEST_F(CrosshairViewDrawing, DrawsOnlyTheHorizontalStripWhereTheVerticalOneIsMissing)
{
    fake.screenCapture.setAnswer({99.5, 0, 1, 1080}, std::nullopt);
    captureAt({100, 200});
    const auto drawing = view->draw();
    ASSERT_EQ(drawing.pictures().size(), 1U);
    EXPECT_EQ(drawing.pictures()[0].rectangle, (Rect{0, 199.5, 1920, 1}));
    EXPECT_EQ(drawing.pictures()[0].image, view->hStrip());
}

TEST_F(CrosshairViewDrawing, DrawsOnlyTheVerticalStripWhereTheHorizontalOneIsMissing)
{
    fake.screenCapture.setAnswer({0, 879.5, 1920, 1}, std::nullopt);
    captureAt({100, 200});
    const auto drawing = view->draw();
    ASSERT_EQ(drawing.pictures().size(), 1U);
    EXPECT_EQ(drawing.pictures()[0].rectangle, (Rect{99.5, 0, 1, 1080}));
    EXPECT_EQ(drawing.pictures()[0].image, view->vStrip());
}

}  // namespace
}  // namespace Tarnwick

#include "Tarnwick/CrosshairController.h"

#include <gtest/gtest.h>

#include <optional>
#include <sstream>

#include "AllocationCounter.h"
#include "Support/FakeSystem.h"

namespace Tarnwick {
namespace {

using Lines = std::vector<std::string>;
using Combination = TestSupport::FakeHotKeyCenter::Combination;
using Platform::DefaultsValue;
using Platform::Rect;

constexpr std::chrono::nanoseconds oneTick{16'666'666};
constexpr Combination optionCommandX{7, 0x900};
constexpr Combination optionCommandL{37, 0x900};

// A loupe that writes down what it is told.
class FakeLoupe final : public LoupeOverlay {
public:
    explicit FakeLoupe(TestSupport::CallLog& log) : m_log(log) { }

    void updateCursor(Platform::Point mouseLocation) override
    {
        std::ostringstream line;
        line << "loupe.updateCursor " << mouseLocation.x << " " << mouseLocation.y;
        m_log.add(line.str());
    }
    void makeKeyAndOrderFront() override { m_log.add("loupe.makeKeyAndOrderFront"); }
    void orderOut() override { m_log.add("loupe.orderOut"); }

private:
    TestSupport::CallLog& m_log;
};

class CrosshairControllerTest : public testing::Test {
protected:
    void start()
    {
        controller.emplace(fake.system, shortcuts, [this](std::function<void()> onDismiss) {
            dismissLoupeFromInside = std::move(onDismiss);
            return std::make_unique<FakeLoupe>(fake.log);
        });
        fake.log.clear();
    }
    // The capture that is under way ends, and everything that follows from it.
    void settle()
    {
        fake.mainLoop.runUntilIdle();
        fake.serialQueues.runAll();
        fake.mainLoop.runUntilIdle();
    }
    void tick()
    {
        fake.mainLoop.advance(oneTick);
        settle();
    }
    void pressEscape()
    {
        fake.overlayWindows.pressKey({.keyCode = 53});
        fake.mainLoop.runUntilIdle();
    }
    Lines takeLines(const Lines& prefixes) { return fake.log.takeLinesOf(prefixes); }
    TestSupport::FakeOverlayWindow& crosshair() { return fake.overlayWindows.last(); }

    TestSupport::FakeSystem fake;
    KeyboardShortcuts::Texts texts;
    std::ostringstream output;
    KeyboardShortcuts::KeyboardShortcuts shortcuts{
        fake.userDefaults, fake.notifications, fake.hotKeys, fake.keyboardLayout, fake.reservedShortcuts, texts, output};
    std::function<void()> dismissLoupeFromInside;
    std::optional<CrosshairController> controller;
};

using ControllerOverlays = CrosshairControllerTest;
using ControllerPump = CrosshairControllerTest;
using ControllerWiring = CrosshairControllerTest;
using ControllerSettings = CrosshairControllerTest;

TEST_F(ControllerOverlays, ShowsAndThenRemovesTheCrosshairAndTheCursorAccordingly)
{
    start();
    controller->showCrosshair();
    EXPECT_TRUE(controller->showsCrosshair());
    EXPECT_TRUE(crosshair().isShown());
    EXPECT_FALSE(fake.cursor.isVisible());
    controller->showCrosshair();
    EXPECT_FALSE(controller->showsCrosshair());
    EXPECT_TRUE(fake.overlayWindows.windows().empty());
    EXPECT_TRUE(fake.cursor.isVisible());
}

TEST_F(ControllerOverlays, ShowsTheCrosshairStepByStep)
{
    start();
    controller->showCrosshair();
    EXPECT_EQ(takeLines({"screens", "overlay", "pointer", "serialQueues", "mainLoop", "cursor"}),
        (Lines{"screens.mainScreen", "overlayWindows.make 1", "pointer.location", "serialQueues.make tarnwick.capture",
            "overlay 1 makeKeyAndOrderFront", "mainLoop.repeatingTimer 16666666", "cursor.hide"}));
}

TEST_F(ControllerOverlays, RemovesTheCrosshairStepByStep)
{
    start();
    controller->showCrosshair();
    settle();
    fake.log.clear();
    controller->showCrosshair();
    EXPECT_EQ(fake.log.lines(), (Lines{"overlay 1 orderOut", "overlay 1 close", "timer.stop", "cursor.show"}));
}

TEST_F(ControllerOverlays, ShowsTheLoupeStepByStep)
{
    start();
    fake.pointer.moveTo(Platform::Point{500.5, 300.25});
    controller->showLoupe();
    EXPECT_EQ(fake.log.lines(),
        (Lines{
            "pointer.location", "loupe.updateCursor 500.5 300.25", "loupe.makeKeyAndOrderFront", "mainLoop.repeatingTimer 16666666", "cursor.hide"}));
    fake.log.clear();
    controller->showLoupe();
    EXPECT_EQ(fake.log.lines(), (Lines{"loupe.orderOut", "timer.stop", "cursor.show"}));
}

TEST_F(ControllerOverlays, KeepsTheCursorHiddenUntilTheLastOverlayGoes)
{
    start();
    controller->showCrosshair();
    controller->showLoupe();
    controller->showCrosshair();
    EXPECT_EQ(takeLines({"cursor"}), (Lines{"cursor.hide"}));
    tick();
    EXPECT_EQ(takeLines({"cursor", "loupe"}), (Lines{"loupe.updateCursor 0 0"}));
    controller->showLoupe();
    EXPECT_EQ(takeLines({"cursor"}), (Lines{"cursor.show"}));
    EXPECT_EQ(fake.cursor.hideCount(), 0);
}

TEST_F(ControllerOverlays, ChangesNothingWhenAnOverlayThatIsNotShownIsDismissed)
{
    start();
    controller->dismissCrosshair();
    controller->dismissLoupe();
    EXPECT_TRUE(fake.log.lines().empty());
    controller->showLoupe();
    fake.log.clear();
    controller->dismissCrosshair();
    EXPECT_TRUE(fake.log.lines().empty());
    EXPECT_TRUE(controller->showsLoupe());
    EXPECT_EQ(fake.mainLoop.activeTimers(), 1);
}

TEST_F(ControllerOverlays, DismissesTheCrosshairOnEscapeOnceTheKeyHandlerHasReturned)
{
    start();
    controller->showCrosshair();
    fake.overlayWindows.pressKey({.keyCode = 53});
    EXPECT_TRUE(controller->showsCrosshair());
    fake.mainLoop.runUntilIdle();
    EXPECT_FALSE(controller->showsCrosshair());
    EXPECT_TRUE(fake.cursor.isVisible());
}

TEST_F(ControllerOverlays, KeepsTheCrosshairOnOtherKeys)
{
    start();
    controller->showCrosshair();
    fake.overlayWindows.pressKey({.keyCode = 36});
    fake.mainLoop.runUntilIdle();
    EXPECT_TRUE(controller->showsCrosshair());
}

TEST_F(ControllerOverlays, DismissesTheCrosshairThatCannotStayAboveEverything)
{
    start();
    controller->showCrosshair();
    crosshair().requestDismissal();
    EXPECT_TRUE(controller->showsCrosshair());
    fake.mainLoop.runUntilIdle();
    EXPECT_FALSE(controller->showsCrosshair());
}

TEST_F(ControllerOverlays, TakesTwoDismissalsOfOneOverlay)
{
    start();
    controller->showCrosshair();
    fake.overlayWindows.pressKey({.keyCode = 53});
    fake.overlayWindows.pressKey({.keyCode = 53});
    fake.mainLoop.runUntilIdle();
    EXPECT_FALSE(controller->showsCrosshair());
    EXPECT_EQ(fake.cursor.hideCount(), 0);
}

TEST_F(ControllerOverlays, DismissesTheLoupeOnceItsCallbackHasReturned)
{
    start();
    controller->showLoupe();
    dismissLoupeFromInside();
    EXPECT_TRUE(controller->showsLoupe());
    fake.mainLoop.runUntilIdle();
    EXPECT_FALSE(controller->showsLoupe());
}

TEST_F(ControllerOverlays, ShowsTheCrosshairOnTheMainScreenOnly)
{
    fake.screens.set({{"MAIN", {0, 0, 1920, 1080}, 1}, {"SIDE", {1920, 56, 1280, 1024}, 1}}, 1);
    start();
    controller->showCrosshair();
    ASSERT_EQ(fake.overlayWindows.windows().size(), 1U);
    EXPECT_EQ(crosshair().frame(), (Rect{1920, 56, 1280, 1024}));
}

TEST_F(ControllerOverlays, ShowsAnEmptyCrosshairWithoutAMainScreen)
{
    fake.screens.set({});
    start();
    controller->showCrosshair();
    EXPECT_TRUE(crosshair().isShown());
    EXPECT_EQ(crosshair().frame(), (Rect{0, 0, 0, 0}));
    settle();
    EXPECT_EQ(fake.cursor.hideCount(), 1);
}

TEST_F(ControllerOverlays, PutsThePointerIntoTheCoordinatesOfTheWindow)
{
    fake.screens.set({{"MAIN", {0, 0, 1920, 1080}, 1}, {"SIDE", {1920, 56, 1280, 1024}, 1}}, 1);
    fake.pointer.moveTo(Platform::Point{2020, 256});
    start();
    controller->showCrosshair();
    settle();
    ASSERT_EQ(crosshair().pictures().size(), 2U);
    EXPECT_EQ(crosshair().pictures()[0].rectangle, (Rect{0, 199.5, 1280, 1}));
    EXPECT_EQ(crosshair().pictures()[1].rectangle, (Rect{99.5, 0, 1, 1024}));
}

TEST_F(ControllerOverlays, ExcludesTheCrosshairsOwnWindowFromItsCapture)
{
    fake.overlayWindows.setNextWindowNumber(4242);
    start();
    controller->showCrosshair();
    settle();
    ASSERT_EQ(fake.screenCapture.requests().size(), 1U);
    EXPECT_EQ(fake.screenCapture.requests()[0].windowNumber, 4242U);
}

TEST_F(ControllerOverlays, ShowsNothingWhileThePointerIsUnknownAndTriesAgain)
{
    fake.pointer.moveTo(std::nullopt);
    start();
    controller->showCrosshair();
    settle();
    tick();
    EXPECT_TRUE(crosshair().isShown());
    EXPECT_EQ(crosshair().presentCount(), 0);
    EXPECT_TRUE(fake.screenCapture.requests().empty());
    fake.pointer.moveTo(Platform::Point{100, 200});
    tick();
    EXPECT_EQ(crosshair().presentCount(), 1);
    EXPECT_EQ(crosshair().pictures()[0].rectangle, (Rect{0, 199.5, 1920, 1}));
}

TEST_F(ControllerOverlays, ShowsTheLoupeWhileThePointerIsUnknownAndPlacesItLater)
{
    fake.pointer.moveTo(std::nullopt);
    start();
    controller->showLoupe();
    EXPECT_EQ(takeLines({"loupe"}), (Lines{"loupe.makeKeyAndOrderFront"}));
    fake.pointer.moveTo(Platform::Point{100, 200});
    tick();
    EXPECT_EQ(takeLines({"loupe"}), (Lines{"loupe.updateCursor 100 200"}));
}

TEST_F(ControllerOverlays, DoesNothingForALoupeThatNobodyMakes)
{
    controller.emplace(fake.system, shortcuts);
    fake.log.clear();
    controller->showLoupe();
    EXPECT_FALSE(controller->showsLoupe());
    EXPECT_TRUE(fake.cursor.isVisible());
    EXPECT_EQ(fake.mainLoop.activeTimers(), 0);
}

TEST_F(ControllerOverlays, MakesAFreshCrosshairEachTimeOnTheSameQueue)
{
    start();
    controller->showCrosshair();
    settle();
    controller->showCrosshair();
    controller->showCrosshair();
    settle();
    EXPECT_EQ(takeLines({"overlayWindows.make", "serialQueues"}),
        (Lines{"overlayWindows.make 1", "serialQueues.make tarnwick.capture", "overlayWindows.make 2"}));
}

TEST_F(ControllerOverlays, DropsACaptureOfACrosshairThatIsDismissed)
{
    start();
    controller->showCrosshair();
    controller->showCrosshair();
    fake.log.clear();
    settle();
    EXPECT_EQ(takeLines({"overlay"}), Lines());
}

TEST_F(ControllerOverlays, LeavesNothingBehindWhenItGoes)
{
    start();
    controller->showCrosshair();
    controller->showLoupe();
    fake.overlayWindows.pressKey({.keyCode = 53});
    dismissLoupeFromInside();
    controller.reset();
    EXPECT_TRUE(fake.cursor.isVisible());
    EXPECT_EQ(fake.mainLoop.activeTimers(), 0);
    EXPECT_TRUE(fake.overlayWindows.windows().empty());
    dismissLoupeFromInside();
    settle();
    fake.hotKeys.press(optionCommandX);
    EXPECT_TRUE(fake.overlayWindows.windows().empty());
}

TEST_F(ControllerPump, RunsOnlyWhileAnOverlayIsShown)
{
    start();
    EXPECT_EQ(fake.mainLoop.activeTimers(), 0);
    controller->showCrosshair();
    controller->showLoupe();
    EXPECT_EQ(fake.mainLoop.activeTimers(), 1);
    controller->showCrosshair();
    EXPECT_EQ(fake.mainLoop.activeTimers(), 1);
    controller->showLoupe();
    EXPECT_EQ(fake.mainLoop.activeTimers(), 0);
    fake.mainLoop.runUntilIdle();
    fake.log.clear();
    fake.mainLoop.advance(std::chrono::seconds(60));
    EXPECT_TRUE(fake.log.lines().empty());
}

TEST_F(ControllerPump, TicksSixtyTimesASecond)
{
    start();
    controller->showCrosshair();
    settle();
    fake.log.clear();
    fake.mainLoop.advance(std::chrono::seconds(1));
    EXPECT_EQ(fake.log.count("pointer.location"), 60);
}

TEST_F(ControllerPump, DoesItsWorkInATaskOfItsOwn)
{
    start();
    controller->showLoupe();
    fake.log.clear();
    fake.mainLoop.advanceWhileBusy(oneTick);
    EXPECT_TRUE(fake.log.lines().empty());
    EXPECT_EQ(fake.mainLoop.runTurn(), 1);
    EXPECT_EQ(fake.log.lines(), (Lines{"pointer.location", "loupe.updateCursor 0 0"}));
}

TEST_F(ControllerPump, AsksForThePointerOnceForBothOverlays)
{
    start();
    controller->showCrosshair();
    controller->showLoupe();
    settle();
    fake.pointer.moveTo(Platform::Point{40, 50});
    fake.log.clear();
    tick();
    EXPECT_EQ(fake.log.lines(), (Lines{"pointer.location", "loupe.updateCursor 40 50", "screenCapture.windowsBelow 1 nominal", "overlay 1 present"}));
}

TEST_F(ControllerPump, RedrawsAndCapturesAgainThoughThePointerRests)
{
    start();
    controller->showCrosshair();
    settle();
    for (int i = 0; i < 5; ++i)
        tick();
    EXPECT_EQ(fake.screenCapture.requests().size(), 6U);
    EXPECT_EQ(crosshair().presentCount(), 6);
}

TEST_F(ControllerPump, FollowsThePointer)
{
    start();
    controller->showCrosshair();
    settle();
    fake.pointer.moveTo(Platform::Point{640, 480.5});
    tick();
    EXPECT_EQ(crosshair().pictures()[0].rectangle, (Rect{0, 480, 1920, 1}));
    EXPECT_EQ(crosshair().pictures()[1].rectangle, (Rect{639.5, 0, 1, 1080}));
}

TEST_F(ControllerPump, IsHarmlessAfterTheOverlayWentInTheSameTurn)
{
    start();
    controller->showCrosshair();
    settle();
    fake.mainLoop.advanceWhileBusy(oneTick);
    controller->showCrosshair();
    fake.log.clear();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(takeLines({"overlay", "cursor", "screenCapture"}), Lines());
}

TEST_F(ControllerPump, DropsTicksOfAControllerThatIsGone)
{
    start();
    controller->showCrosshair();
    fake.mainLoop.advanceWhileBusy(oneTick);
    controller.reset();
    fake.log.clear();
    fake.mainLoop.runUntilIdle();
    EXPECT_TRUE(fake.log.lines().empty());
}

TEST_F(ControllerPump, AllocatesNothing)
{
    start();
    controller->showCrosshair();
    settle();
    fake.log.setRecording(false);
    for (int i = 0; i < 10; ++i)
        tick();
    const int presentedBefore = crosshair().presentCount();
    long allocations = 0;
    {
        const AllocationCounter counter;
        for (int i = 0; i < 100; ++i) {
            fake.pointer.moveTo(Platform::Point{100.0 + i, 200.0 + i});
            tick();
        }
        allocations = counter.count();
    }
    EXPECT_EQ(allocations, 0);
    EXPECT_EQ(crosshair().presentCount(), presentedBefore + 100);
    EXPECT_TRUE(crosshair().pictures()[0].hasImage);
}

TEST(AllocationCounter, CountsAllocations)
{
    const AllocationCounter counter;
    const auto number = std::make_unique<int>(1);
    const std::vector<int> numbers(100, *number);
    EXPECT_EQ(counter.count(), 2);
    EXPECT_EQ(numbers.size(), 100U);
}

TEST_F(ControllerWiring, StoresAndRegistersBothDefaultsAtTheFirstStart)
{
    start();
    const auto registered = fake.hotKeys.registered();
    ASSERT_EQ(registered.size(), 2U);
    EXPECT_EQ(registered.at(1), optionCommandX);
    EXPECT_EQ(registered.at(2), optionCommandL);
    EXPECT_TRUE(fake.userDefaults.values().contains("KeyboardShortcuts_toggleCrosshair"));
    EXPECT_TRUE(fake.userDefaults.values().contains("KeyboardShortcuts_toggleLoupe"));
    EXPECT_EQ(fake.userDefaults.values().size(), 2U);
}

TEST_F(ControllerWiring, TogglesAnOverlayByItsShortcut)
{
    start();
    fake.hotKeys.press(optionCommandX);
    EXPECT_TRUE(controller->showsCrosshair());
    fake.hotKeys.release(optionCommandX);
    EXPECT_TRUE(controller->showsCrosshair());
    fake.hotKeys.press(optionCommandL);
    EXPECT_TRUE(controller->showsLoupe());
    fake.hotKeys.press(optionCommandX);
    EXPECT_FALSE(controller->showsCrosshair());
    EXPECT_TRUE(controller->showsLoupe());
    fake.hotKeys.press(optionCommandL);
    EXPECT_FALSE(controller->showsLoupe());
}

TEST_F(ControllerWiring, HasAnOldHotKeyInEffectAtTheFirstStart)
{
    fake.userDefaults.values()["tarnwick.hotkey.keyCode"] = std::int64_t(40);
    fake.userDefaults.values()["tarnwick.hotkey.modifiers"] = std::int64_t(0x1200);
    start();
    fake.hotKeys.press(optionCommandX);
    EXPECT_FALSE(controller->showsCrosshair());
    fake.hotKeys.press({40, 0x1200});
    EXPECT_TRUE(controller->showsCrosshair());
    EXPECT_FALSE(fake.userDefaults.values().contains("tarnwick.hotkey.keyCode"));
}

TEST_F(ControllerWiring, KeepsTheShortcutsWithoutAMenuBarItem)
{
    fake.userDefaults.values()["tarnwick.showMenuBarItem"] = false;
    start();
    fake.hotKeys.press(optionCommandX);
    EXPECT_TRUE(controller->showsCrosshair());
    fake.hotKeys.press(optionCommandL);
    EXPECT_TRUE(controller->showsLoupe());
}

TEST_F(ControllerWiring, TogglesByTheShortcutThatIsStored)
{
    fake.userDefaults.values()["KeyboardShortcuts_toggleCrosshair"] = std::string(R"({"carbonKeyCode":35,"carbonModifiers":6400})");
    start();
    fake.hotKeys.press(optionCommandX);
    EXPECT_FALSE(controller->showsCrosshair());
    fake.hotKeys.press({35, 6400});
    EXPECT_TRUE(controller->showsCrosshair());
}

TEST_F(ControllerWiring, LeavesAClearedShortcutCleared)
{
    fake.userDefaults.values()["KeyboardShortcuts_toggleCrosshair"] = false;
    start();
    EXPECT_EQ(fake.hotKeys.registered().size(), 1U);
    fake.hotKeys.press(optionCommandX);
    EXPECT_FALSE(controller->showsCrosshair());
}

TEST_F(ControllerWiring, GoesOnWhereAHotKeyIsTaken)
{
    fake.hotKeys.refuse(optionCommandX);
    start();
    EXPECT_EQ(output.str(), "Error registering hotkey ⌥⌘X: -9878\n");
    fake.hotKeys.press(optionCommandL);
    EXPECT_TRUE(controller->showsLoupe());
}

TEST_F(ControllerSettings, HaveTheirDefaultsForAFreshUser)
{
    start();
    EXPECT_TRUE(controller->showMenuBarItem());
    EXPECT_FALSE(controller->onboardingCompleted());
    EXPECT_EQ(controller->statusItemAction(), StatusItemAction::menu);
    EXPECT_FALSE(fake.userDefaults.values().contains("tarnwick.showMenuBarItem"));
}

TEST_F(ControllerSettings, AreWrittenUnderTheirKeys)
{
    start();
    controller->setShowMenuBarItem(false);
    controller->setOnboardingCompleted(true);
    controller->setStatusItemAction(StatusItemAction::loupe);
    EXPECT_EQ(fake.userDefaults.values().at("tarnwick.showMenuBarItem"), DefaultsValue(false));
    EXPECT_EQ(fake.userDefaults.values().at("tarnwick.onboardingCompleted"), DefaultsValue(true));
    EXPECT_EQ(fake.userDefaults.values().at("tarnwick.statusItemAction"), DefaultsValue(std::string("loupe")));
    EXPECT_FALSE(controller->showMenuBarItem());
    EXPECT_TRUE(controller->onboardingCompleted());
    EXPECT_EQ(controller->statusItemAction(), StatusItemAction::loupe);
}

TEST_F(ControllerSettings, AreReadAfresh)
{
    start();
    fake.userDefaults.values()["tarnwick.statusItemAction"] = std::string("crosshair");
    EXPECT_EQ(controller->statusItemAction(), StatusItemAction::crosshair);
    fake.userDefaults.values()["tarnwick.statusItemAction"] = std::string("fireworks");
    EXPECT_EQ(controller->statusItemAction(), StatusItemAction::menu);
}

TEST_F(ControllerSettings, AnnounceAChangeBeforeItHappens)
{
    start();
    std::vector<bool> seen;
    const auto token = fake.notifications.addObserver(
        std::string(CrosshairController::objectWillChange), [&](const Platform::Notification&) { seen.push_back(controller->showMenuBarItem()); });
    controller->setShowMenuBarItem(false);
    EXPECT_EQ(seen, (std::vector<bool>{true}));
}

TEST_F(CrosshairControllerTest, CallsThePreferencesCallbackIfThereIsOne)
{
    start();
    controller->showPreferences();
    int calls = 0;
    controller->setOnShowPreferences([&calls] { ++calls; });
    controller->showPreferences();
    EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace Tarnwick

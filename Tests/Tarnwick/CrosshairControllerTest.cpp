// The controller's pump, its wiring to shortcuts, and its settings.
#include "CrosshairControllerFixture.h"
#include "Support/AllocationCounter.h"

namespace Tarnwick {
namespace {

using Platform::DefaultsValue;
using Platform::Rect;

using ControllerPump = CrosshairControllerTest;
using ControllerWiring = CrosshairControllerTest;
using ControllerSettings = CrosshairControllerTest;

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
    const TestSupport::AllocationCounter counter;
    for (int i = 0; i < 100; ++i) {
        fake.pointer.moveTo(Platform::Point{100.0 + i, 200.0 + i});
        tick();
    }
    EXPECT_EQ(counter.count(), 0);
    EXPECT_EQ(crosshair().presentCount(), presentedBefore + 100);
    EXPECT_TRUE(crosshair().pictures()[0].hasImage);
}

TEST(AllocationCounter, CountsAllocations)
{
    const TestSupport::AllocationCounter counter;
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

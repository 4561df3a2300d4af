#include "Tarnwick/StatusItemController.h"

#include <gtest/gtest.h>

#include <optional>
#include <sstream>

#include "Support/FakeSystem.h"
#include "Tarnwick/CrosshairController.h"

namespace Tarnwick {
namespace {

using Lines = std::vector<std::string>;
using KeyboardShortcuts::Shortcut;
using Platform::KeyEquivalent;

constexpr std::size_t crosshairItem = 0;
constexpr std::size_t loupeItem = 1;
constexpr std::size_t preferencesItem = 3;
constexpr std::size_t quitItem = 5;

class FakeLoupe final : public LoupeOverlay {
public:
    void updateCursor(Platform::Point) override { }
    void makeKeyAndOrderFront() override { }
    void orderOut() override { }
};

class StatusItemControllerTest : public testing::Test {
protected:
    void start()
    {
        controller.emplace(fake.system, shortcuts, [](const std::function<void()>&) { return std::make_unique<FakeLoupe>(); });
    }
    void store(StatusItemAction action) { fake.userDefaults.values()["tarnwick.statusItemAction"] = std::string(rawValue(action)); }
    void hide() { fake.userDefaults.values()["tarnwick.showMenuBarItem"] = false; }
    TestSupport::FakeStatusBar& bar() { return fake.statusBar; }
    TestSupport::FakeStatusItem& icon() { return *bar().item(); }
    TestSupport::FakeMenu& menu() { return *bar().newestMenu(); }
    bool menuIsOpen() { return bar().openMenu() != nullptr; }
    Lines takeLines() { return fake.log.takeLinesOf({"statusBar", "statusItem", "menu", "application"}); }

    TestSupport::FakeSystem fake;
    KeyboardShortcuts::Texts texts;
    std::ostringstream output;
    KeyboardShortcuts::KeyboardShortcuts shortcuts{
        fake.userDefaults, fake.notifications, fake.hotKeys, fake.keyboardLayout, fake.reservedShortcuts, texts, output};
    std::optional<CrosshairController> controller;
};

using StatusItemMenu = StatusItemControllerTest;
using StatusItemClicks = StatusItemControllerTest;
using StatusItemWiring = StatusItemControllerTest;

TEST_F(StatusItemControllerTest, InstallsTheIconWithItsMenuByDefault)
{
    start();
    EXPECT_EQ(takeLines(),
        (Lines{"statusBar.makeStatusItem 1", "statusBar.makeMenu 1", "statusItem 1 image plusViewfinder Tarnwick", "statusItem 1 menu 1"}));
    EXPECT_EQ(icon().accessibilityDescription(), "Tarnwick");
}

TEST_F(StatusItemControllerTest, InstallsNothingWhereTheIconIsHidden)
{
    hide();
    start();
    EXPECT_TRUE(takeLines().empty());
}

TEST_F(StatusItemControllerTest, OffersTheMenuToPanelsWhereAClickDoesSomethingElse)
{
    store(StatusItemAction::crosshair);
    start();
    EXPECT_EQ(takeLines(),
        (Lines{"statusBar.makeStatusItem 1", "statusBar.makeMenu 1", "statusItem 1 image plusViewfinder Tarnwick", "statusItem 1 action",
            "statusItem 1 panelMenu 1"}));
    EXPECT_EQ(icon().menu(), nullptr);
}

TEST_F(StatusItemControllerTest, TakesTheIconAwayAndBringsItBackWithTheSetting)
{
    start();
    controller->setShowMenuBarItem(false);
    EXPECT_EQ(bar().itemCount(), 0U);
    controller->setShowMenuBarItem(true);
    EXPECT_EQ(bar().itemCount(), 1U);
    EXPECT_EQ(icon().menu(), &menu());
}

TEST_F(StatusItemControllerTest, LeavesAnInstalledIconAsItIs)
{
    start();
    takeLines();
    controller->setShowMenuBarItem(true);
    EXPECT_TRUE(takeLines().empty());
    controller->setShowMenuBarItem(false);
    takeLines();
    controller->setShowMenuBarItem(false);
    EXPECT_TRUE(takeLines().empty());
}

TEST_F(StatusItemControllerTest, KeepsTheMenuOfAnIconThatIsHidden)
{
    start();
    takeLines();
    controller->setShowMenuBarItem(false);
    EXPECT_EQ(takeLines(), (Lines{"statusItem 1 remove"}));
    EXPECT_EQ(menu().number(), 1);
}

TEST_F(StatusItemControllerTest, MakesIconAndMenuAnewForAnotherAction)
{
    start();
    takeLines();
    controller->setStatusItemAction(StatusItemAction::loupe);
    EXPECT_EQ(takeLines(),
        (Lines{"statusItem 1 remove", "statusBar.makeStatusItem 2", "menu 1 remove", "statusBar.makeMenu 2",
            "statusItem 2 image plusViewfinder Tarnwick", "statusItem 2 action", "statusItem 2 panelMenu 2"}));
}

TEST_F(StatusItemControllerTest, InstallsNothingForAnotherActionWhileHiddenAndTheCurrentModeLater)
{
    hide();
    start();
    controller->setStatusItemAction(StatusItemAction::crosshair);
    EXPECT_TRUE(takeLines().empty());
    controller->setShowMenuBarItem(true);
    EXPECT_EQ(icon().menu(), nullptr);
    icon().click();
    EXPECT_TRUE(controller->showsCrosshair());
}

TEST_F(StatusItemControllerTest, KeepsAnItemWithoutAButton)
{
    bar().withholdButtons();
    start();
    EXPECT_EQ(takeLines(), (Lines{"statusBar.makeStatusItem 1", "statusBar.makeMenu 1", "statusItem 1 menu 1"}));
    controller->setStatusItemAction(StatusItemAction::crosshair);
    EXPECT_EQ(bar().itemCount(), 1U);
    EXPECT_EQ(icon().menu(), nullptr);
    EXPECT_EQ(icon().panelMenu(), nullptr);
}

TEST_F(StatusItemControllerTest, TakesTheIconAwayWhenTheControllerGoes)
{
    start();
    controller.reset();
    EXPECT_EQ(takeLines().back(), "menu 1 remove");
    EXPECT_EQ(bar().itemCount(), 0U);
}

TEST_F(StatusItemMenu, HasItsItemsInOrder)
{
    start();
    EXPECT_EQ(menu().titles(), (Lines{"Show Crosshair", "Show Loupe", "-", "Preferences…", "-", "Quit Tarnwick"}));
    EXPECT_EQ(menu().item(preferencesItem).keyEquivalent().text, "");
    EXPECT_EQ(menu().item(quitItem).keyEquivalent(), (KeyEquivalent{"q", 0x100000, true}));
}

TEST_F(StatusItemMenu, ShowsTheDefaultShortcuts)
{
    start();
    EXPECT_EQ(menu().item(crosshairItem).keyEquivalent(), (KeyEquivalent{"x", 0x180000, false}));
    EXPECT_EQ(menu().item(loupeItem).keyEquivalent(), (KeyEquivalent{"l", 0x180000, false}));
}

TEST_F(StatusItemMenu, ShowsAChangedShortcutWhenItOpensNext)
{
    start();
    shortcuts.setShortcut(Shortcut::fromCarbon(35, 0x1100), KeyboardShortcuts::Name("toggleCrosshair"));
    icon().click();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(menu().item(crosshairItem).keyEquivalent(), (KeyEquivalent{"p", 0x140000, false}));
}

TEST_F(StatusItemMenu, ShowsAShortcutThatAnotherProcessStored)
{
    start();
    fake.userDefaults.values()["KeyboardShortcuts_toggleLoupe"] = std::string(R"({"carbonKeyCode":35,"carbonModifiers":4352})");
    EXPECT_EQ(menu().item(loupeItem).keyEquivalent().text, "l");
    icon().click();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(menu().item(loupeItem).keyEquivalent(), (KeyEquivalent{"p", 0x140000, false}));
}

TEST_F(StatusItemMenu, ShowsNoHintForAClearedShortcut)
{
    fake.userDefaults.values()["KeyboardShortcuts_toggleCrosshair"] = false;
    start();
    EXPECT_EQ(menu().item(crosshairItem).keyEquivalent(), (KeyEquivalent{"", 0, true}));
}

TEST_F(StatusItemMenu, OffersToHideWhatIsShown)
{
    start();
    fake.hotKeys.press({37, 0x900});
    icon().click();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(menu().titles(), (Lines{"Show Crosshair", "Hide Loupe", "-", "Preferences…", "-", "Quit Tarnwick"}));
    menu().choose(loupeItem);
    EXPECT_FALSE(controller->showsLoupe());
    icon().click();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(menu().item(loupeItem).title(), "Show Loupe");
}

TEST_F(StatusItemMenu, OffersToHideWhatWasShownWhenItWasMade)
{
    start();
    controller->showCrosshair();
    controller->setStatusItemAction(StatusItemAction::crosshair);
    EXPECT_EQ(menu().item(crosshairItem).title(), "Hide Crosshair");
}

TEST_F(StatusItemMenu, RefreshesItselfOnceTheCallThatOpensItHasReturned)
{
    start();
    controller->showCrosshair();
    fake.mainLoop.runUntilIdle();
    icon().click();
    EXPECT_EQ(menu().item(crosshairItem).title(), "Show Crosshair");
    EXPECT_EQ(fake.mainLoop.waitingTasks(), 1);
    fake.mainLoop.runTurn();
    EXPECT_EQ(menu().item(crosshairItem).title(), "Hide Crosshair");
}

TEST_F(StatusItemMenu, IsLeftAloneByARefreshThatComesTooLate)
{
    start();
    icon().click();
    controller.reset();
    fake.mainLoop.runUntilIdle();
    EXPECT_EQ(bar().newestMenu(), nullptr);
}

TEST_F(StatusItemMenu, TogglesTheOverlays)
{
    start();
    menu().choose(crosshairItem);
    EXPECT_TRUE(controller->showsCrosshair());
    menu().choose(crosshairItem);
    EXPECT_FALSE(controller->showsCrosshair());
    menu().choose(loupeItem);
    EXPECT_TRUE(controller->showsLoupe());
}

TEST_F(StatusItemMenu, OpensThePreferences)
{
    start();
    int calls = 0;
    controller->setOnShowPreferences([&calls] { ++calls; });
    menu().choose(preferencesItem);
    EXPECT_EQ(calls, 1);
}

TEST_F(StatusItemMenu, EndsTheProgram)
{
    start();
    takeLines();
    menu().choose(quitItem);
    EXPECT_EQ(takeLines().back(), "application.terminate");
}

TEST_F(StatusItemClicks, OpenTheMenuByDefault)
{
    start();
    icon().click();
    EXPECT_TRUE(menuIsOpen());
    EXPECT_EQ(menu().item(crosshairItem).title(), "Show Crosshair");
    menu().close();
    icon().rightClick();
    EXPECT_TRUE(menuIsOpen());
    EXPECT_FALSE(controller->showsCrosshair());
}

TEST_F(StatusItemClicks, ToggleTheCrosshair)
{
    store(StatusItemAction::crosshair);
    start();
    icon().click();
    EXPECT_TRUE(controller->showsCrosshair());
    EXPECT_FALSE(fake.cursor.isVisible());
    icon().click();
    EXPECT_FALSE(controller->showsCrosshair());
    EXPECT_TRUE(fake.cursor.isVisible());
    EXPECT_EQ(fake.mainLoop.activeTimers(), 0);
    EXPECT_FALSE(menuIsOpen());
}

TEST_F(StatusItemClicks, ToggleTheLoupe)
{
    store(StatusItemAction::loupe);
    start();
    icon().click();
    EXPECT_TRUE(controller->showsLoupe());
    EXPECT_FALSE(controller->showsCrosshair());
    icon().click();
    EXPECT_FALSE(controller->showsLoupe());
}

TEST_F(StatusItemClicks, OpenTheMenuWithTheRightButtonOnce)
{
    store(StatusItemAction::crosshair);
    start();
    icon().rightClick();
    EXPECT_TRUE(menuIsOpen());
    EXPECT_EQ(icon().menu(), &menu());
    EXPECT_FALSE(controller->showsCrosshair());
    menu().close();
    EXPECT_EQ(icon().menu(), nullptr);
    icon().click();
    EXPECT_TRUE(controller->showsCrosshair());
}

TEST_F(StatusItemClicks, OpenTheMenuWithControl)
{
    store(StatusItemAction::loupe);
    start();
    icon().click({.modifierFlags = Platform::ModifierFlag::control | Platform::ModifierFlag::capsLock});
    EXPECT_TRUE(menuIsOpen());
    menu().close();
    EXPECT_EQ(icon().menu(), nullptr);
    EXPECT_FALSE(controller->showsLoupe());
}

TEST_F(StatusItemClicks, ToggleWithOtherModifiers)
{
    store(StatusItemAction::loupe);
    start();
    icon().click({.modifierFlags = Platform::ModifierFlag::shift | Platform::ModifierFlag::option | Platform::ModifierFlag::command});
    EXPECT_TRUE(controller->showsLoupe());
}

TEST_F(StatusItemClicks, DetachTheMenuBeforeTheChosenItemActs)
{
    store(StatusItemAction::crosshair);
    start();
    icon().rightClick();
    takeLines();
    menu().choose(quitItem);
    EXPECT_EQ(takeLines(), (Lines{"menu 1 close", "statusItem 1 menu 0", "application.terminate"}));
}

TEST_F(StatusItemClicks, FollowTheStoredActionWithoutANewIcon)
{
    store(StatusItemAction::crosshair);
    start();
    store(StatusItemAction::loupe);
    icon().click();
    EXPECT_TRUE(controller->showsLoupe());
    store(StatusItemAction::menu);
    icon().click();
    EXPECT_TRUE(controller->showsLoupe());
    EXPECT_FALSE(controller->showsCrosshair());
    EXPECT_FALSE(menuIsOpen());
}

TEST_F(StatusItemClicks, OpenTheMenuForAStoredActionThatDoesNotExist)
{
    fake.userDefaults.values()["tarnwick.statusItemAction"] = std::string("fireworks");
    start();
    icon().click();
    EXPECT_TRUE(menuIsOpen());
}

TEST_F(StatusItemWiring, MigratesBeforeTheIconIsMade)
{
    fake.userDefaults.values()["tarnwick.hotkey.keyCode"] = std::int64_t(40);
    fake.userDefaults.values()["tarnwick.hotkey.modifiers"] = std::int64_t(0x1200);
    start();
    const auto lines = fake.log.takeLinesOf({"userDefaults.removeObject", "statusBar.make"});
    EXPECT_EQ(lines,
        (Lines{"userDefaults.removeObject tarnwick.hotkey.keyCode", "userDefaults.removeObject tarnwick.hotkey.modifiers",
            "statusBar.makeStatusItem 1", "statusBar.makeMenu 1"}));
    EXPECT_EQ(menu().item(crosshairItem).keyEquivalent(), (KeyEquivalent{"k", 0x60000, false}));
}

}  // namespace
}  // namespace Tarnwick

// The icon over D-Bus, its menu and its clicks, as a panel sees and sends them.
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include <optional>
#include <set>

#include "EndToEnd/ExpectedScreen.h"
#include "EndToEnd/StatusItemScene.h"
#include "Support/Desktop/PopupMenus.h"
#include "Support/Desktop/PrivateBus.h"
#include "Support/Desktop/StatusNotifierHost.h"
#include "Support/Desktop/TrayIcon.h"
#include "Support/WaitUntil.h"

using namespace TestSupport;
using Labels = std::vector<std::string>;
using namespace std::chrono_literals;

namespace {

const Labels menuAtRest{"Show Crosshair", "Show Loupe", "---", "Preferences…", "---", "Quit Tarnwick"};

struct BusStatusItem : StatusItemScene {
    PrivateBus bus{desktop.home(), {}};
    std::optional<StatusNotifierHost> host;

    StatusNotifierItem startWithHost(const std::string& settings = {})
    {
        host.emplace(bus.address());
        start(bus.address(), settings);
        return host->waitForItem();
    }

    // The hint once it is that, else whatever it is.
    static std::string shortcutOnceItIs(const std::string& wanted, const TrayMenu& menu, const std::string& label)
    {
        std::string shortcut;
        waitUntil(
            [&] {
                shortcut = menu.shortcutOf(label);
                return shortcut == wanted;
            },
            5s);
        return shortcut;
    }

    static bool comesToSay(const TrayMenu& menu, const std::string& first, const std::string& second)
    {
        return waitUntil(
            [&] {
                const auto labels = menu.labels();
                return labels.size() == 6 && labels[0] == first && labels[1] == second;
            },
            5s);
    }
};

TEST_F(BusStatusItem, IsThereWithItsName)
{
    const auto item = startWithHost();
    EXPECT_EQ(item.title(), "Tarnwick");
    EXPECT_EQ(item.toolTip(), "Tarnwick");
    EXPECT_EQ(item.status(), "Active");
    EXPECT_EQ(host->items().size(), 1U);
}

TEST_F(BusStatusItem, HasAPictureInEveryUsualSize)
{
    std::set<int> sizes;
    for (const auto& picture : startWithHost().pictures()) {
        EXPECT_EQ(picture.width, picture.height);
        EXPECT_GT(picture.visiblePixels, picture.width);
        EXPECT_LT(picture.visiblePixels, picture.width * picture.height);
        sizes.insert(picture.width);
    }
    for (const int size : {16, 22, 24, 32, 48})
        EXPECT_TRUE(sizes.contains(size)) << size;
}

TEST_F(BusStatusItem, HasItsMenuWithTheDefaultShortcuts)
{
    const auto menu = startWithHost().menu();
    EXPECT_EQ(menu.labels(), menuAtRest);
    EXPECT_EQ(menu.shortcutOf("Show Crosshair"), "Super+Alt+X");
    EXPECT_EQ(menu.shortcutOf("Show Loupe"), "Super+Alt+L");
    EXPECT_EQ(menu.shortcutOf("Preferences…"), "");
    EXPECT_EQ(menu.shortcutOf("Quit Tarnwick"), "Super+Q");
    EXPECT_EQ(menu.entries(), menu.entriesAskedForOneByOne());
    for (const auto& entry : menu.entries())
        EXPECT_TRUE(entry.isEnabled && entry.isVisible) << entry;
}

TEST_F(BusStatusItem, ShowsAChangedShortcutWhenTheMenuOpensNext)
{
    const auto menu = startWithHost().menu();
    ASSERT_EQ(menu.shortcutOf("Show Crosshair"), "Super+Alt+X");
    writeSettings(R"({"KeyboardShortcuts_toggleCrosshair": "{\"carbonKeyCode\":16,\"carbonModifiers\":256}",
        "KeyboardShortcuts_toggleLoupe": false})");
    const auto changesBefore = host->menuChanges();
    menu.open();
    EXPECT_EQ(shortcutOnceItIs("Super+Y", menu, "Show Crosshair"), "Super+Y");
    EXPECT_EQ(shortcutOnceItIs("", menu, "Show Loupe"), "");
    EXPECT_GT(host->menuChanges(), changesBefore);
}

TEST_F(BusStatusItem, ShowsAndHidesTheCrosshairByItsMenu)
{
    const auto menu = startWithHost().menu();
    menu.open();
    menu.click("Show Crosshair");
    menu.close();
    EXPECT_TRUE(showsCrosshair());
    menu.open();
    EXPECT_TRUE(comesToSay(menu, "Hide Crosshair", "Show Loupe"));
    menu.click("Hide Crosshair");
    menu.close();
    EXPECT_TRUE(showsNothing());
    menu.open();
    EXPECT_TRUE(comesToSay(menu, "Show Crosshair", "Show Loupe"));
}

TEST_F(BusStatusItem, HidesTheLoupeThatTheShortcutShowed)
{
    const auto menu = startWithHost().menu();
    pressLoupeShortcut();
    EXPECT_TRUE(showsLoupe());
    menu.open();
    EXPECT_TRUE(comesToSay(menu, "Show Crosshair", "Hide Loupe"));
    menu.click("Hide Loupe");
    menu.close();
    EXPECT_TRUE(showsNothing());
}

TEST_F(BusStatusItem, OpensTheMenuOnALeftClick)
{
    const auto item = startWithHost();
    item.activate();
    closeMenu();
    EXPECT_TRUE(showsNothing());
    item.activate();
    clickFirstEntry(desktop, waitForMenu(desktop));
    EXPECT_TRUE(showsCrosshair());
}

TEST_F(BusStatusItem, TogglesTheCrosshairOnALeftClick)
{
    const auto item = startWithHost(crosshairMode);
    item.activate();
    EXPECT_TRUE(showsCrosshair());
    EXPECT_TRUE(waitForNoMenu(desktop));
    item.activate();
    EXPECT_TRUE(showsNothing());
}

TEST_F(BusStatusItem, TogglesTheLoupeOnALeftClick)
{
    const auto item = startWithHost(loupeMode);
    item.activate();
    EXPECT_TRUE(showsLoupe());
    EXPECT_TRUE(waitForNoMenu(desktop));
    item.activate();
    EXPECT_TRUE(showsNothing());
}

TEST_F(BusStatusItem, OpensTheMenuOnAControlClickOnly)
{
    const auto item = startWithHost(crosshairMode);
    desktop.keyboard().press(KEY_LEFTCTRL);
    item.activate();
    waitForMenu(desktop);
    desktop.keyboard().release(KEY_LEFTCTRL);
    closeMenu();
    EXPECT_TRUE(showsNothing());
    item.activate();
    EXPECT_TRUE(showsCrosshair());
}

TEST_F(BusStatusItem, GivesThePanelItsMenuInEveryMode)
{
    const auto menu = startWithHost(loupeMode).menu();
    EXPECT_EQ(menu.labels(), menuAtRest);
    menu.open();
    menu.click("Show Loupe");
    menu.close();
    EXPECT_TRUE(showsLoupe());
}

TEST_F(BusStatusItem, DoesNothingOnAMiddleClick)
{
    const auto item = startWithHost(crosshairMode);
    item.secondaryActivate();
    item.activate();
    EXPECT_TRUE(showsCrosshair());  // not twice
}

TEST_F(BusStatusItem, SaysOnceThatThereIsNoTray)
{
    start(bus.address());
    ASSERT_TRUE(waitUntil([&] { return program->standardError().ends_with('\n'); }));
    pressCrosshairShortcut();
    EXPECT_TRUE(showsCrosshair());
    EXPECT_EQ(
        program->standardError(), "tarnwick: this desktop shows no tray icons now; the shortcuts work, and the icon appears once there is a tray\n");
}

TEST_F(BusStatusItem, ComesWhenTheTrayComes)
{
    start(bus.address());
    ASSERT_TRUE(waitUntil([&] { return program->standardError().ends_with('\n'); }));
    host.emplace(bus.address());
    const auto menu = host->waitForItem().menu();
    menu.click("Show Crosshair");
    EXPECT_TRUE(showsCrosshair());
}

TEST_F(BusStatusItem, ComesBackWithTheTray)
{
    startWithHost();
    for (int i = 0; i < 2; ++i) {
        host.reset();
        host.emplace(bus.address());
        EXPECT_EQ(host->waitForItem().title(), "Tarnwick");
    }
    EXPECT_EQ(host->items().size(), 1U);
    const auto menu = host->waitForItem().menu();
    EXPECT_EQ(menu.labels(), menuAtRest);
    menu.click("Show Crosshair");
    EXPECT_TRUE(showsCrosshair());
}

TEST_F(BusStatusItem, QuitsTheProgram)
{
    const auto menu = startWithHost().menu();
    pressCrosshairShortcut();
    ASSERT_TRUE(showsCrosshair());
    menu.open();
    menu.click("Quit Tarnwick");
    EXPECT_EQ(program->process().waitForExit(20s), 0);
    EXPECT_TRUE(showsNothing());
    EXPECT_TRUE(isCrosshairShortcutFree());
    EXPECT_TRUE(waitUntil([&] { return host->items().empty(); }));
}

TEST_F(BusStatusItem, StaysAwayWhenTheUserWantsNone)
{
    host.emplace(bus.address());
    start(bus.address(), hiddenIcon);
    pressCrosshairShortcut();
    EXPECT_TRUE(showsCrosshair());
    pressCrosshairShortcut();
    EXPECT_TRUE(showsNothing());
    pressLoupeShortcut();
    EXPECT_TRUE(showsLoupe());
    EXPECT_FALSE(waitUntil([&] { return !host->items().empty(); }, 1s));
    EXPECT_EQ(program->standardError(), "");
}

TEST_F(BusStatusItem, LetsTheShortcutsWorkOnceEachWhileThePanelShowsTheMenu)
{
    const auto menu = startWithHost().menu();
    menu.open();
    pressCrosshairShortcut();
    EXPECT_TRUE(showsCrosshair());
    EXPECT_TRUE(showsCrosshair(500, 300));
    pressCrosshairShortcut();
    EXPECT_TRUE(showsNothing());
    desktop.pointer().moveTo(600, 400);
    pressLoupeShortcut();
    EXPECT_TRUE(showsLoupe());
    pressLoupeShortcut();
    EXPECT_TRUE(showsNothing());
    menu.close();
    pressCrosshairShortcut();
    EXPECT_TRUE(showsCrosshair());
}

TEST_F(BusStatusItem, LetsTheCrosshairFollowThePointerWhileItsMenuIsOpen)
{
    const auto item = startWithHost();
    pressCrosshairShortcut();
    ASSERT_TRUE(showsCrosshair());
    item.activate();
    const auto menu = waitForMenu(desktop);
    desktop.pointer().moveTo(200, 700);
    const auto isAt = [&](const Platform::Image& screen, int x, int y) {
        const auto expected = withCrosshair(beneath, x, y);
        return !changedPart(expected, screen, {0, 650, 400, 150});
    };
    EXPECT_FALSE(menu.contains({200, 700}));
    EXPECT_TRUE(waitUntil([&] { return isAt(desktop.screenshot(), 200, 700); }));
    EXPECT_EQ(openMenus(desktop.connection()).size(), 1U);
}

}  // namespace

// The icon in the tray, its menu and its clicks, over D-Bus and embedded.
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include <fstream>
#include <optional>
#include <set>

#include "EndToEnd/ExpectedScreen.h"
#include "EndToEnd/TarnwickProgram.h"
#include "Support/Desktop/Desktop.h"
#include "Support/Desktop/ForeignHotKey.h"
#include "Support/Desktop/PopupMenus.h"
#include "Support/Desktop/PrivateBus.h"
#include "Support/Desktop/StatusNotifierHost.h"
#include "Support/Desktop/TestPattern.h"
#include "Support/Desktop/TrayIcon.h"
#include "Support/Desktop/Trayer.h"
#include "Support/Desktop/VisibleCursor.h"
#include "Support/Desktop/Wallpaper.h"
#include "Support/Desktop/XfcePanel.h"
#include "Support/WaitUntil.h"

using namespace TestSupport;
using Platform::X11::DeviceRect;
using Labels = std::vector<std::string>;
using namespace std::chrono_literals;

namespace {

const std::string crosshairMode = R"({"tarnwick.statusItemAction": "crosshair"})";
const std::string loupeMode = R"({"tarnwick.statusItemAction": "loupe"})";
const std::string hiddenIcon = R"({"tarnwick.showMenuBarItem": false})";
const Labels menuAtRest{"Show Crosshair", "Show Loupe", "---", "Preferences…", "---", "Quit Tarnwick"};

// What lies below the panels, and what they show for a moment beside them.
constexpr DeviceRect belowPanels{0, 150, 1280, 650};

// A desktop with the program, whose overlays are looked at away from the panel.
struct StatusItemScene : testing::Test {
    Desktop desktop{WindowManagerKind::openbox};
    Wallpaper wallpaper{desktop.displayName(), testPattern(1280, 800, 7)};
    Platform::Image beneath;
    std::optional<TarnwickProgram> program;

    std::filesystem::path settingsFile() const { return desktop.home() / "tarnwick-home" / "tarnwick" / "defaults.json"; }

    void writeSettings(const std::string& contents) const
    {
        std::filesystem::create_directories(settingsFile().parent_path());
        const auto fresh = settingsFile().string() + ".new";
        std::ofstream(fresh) << contents;
        std::filesystem::rename(fresh, settingsFile());
    }

    void start(const std::string& busAddress, const std::string& settings = {})
    {
        desktop.pointer().moveTo(600, 400);
        beneath = desktop.screenshotAtRest();
        if (!settings.empty())
            writeSettings(settings);
        program.emplace(desktop, TarnwickProgram::Environment{{"DBUS_SESSION_BUS_ADDRESS", busAddress}});
        program->waitUntilReady();
    }

    void pressCrosshairShortcut() { desktop.keyboard().chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_X}); }
    void pressLoupeShortcut() { desktop.keyboard().chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_L}); }

    bool differsFrom(const Platform::Image& expected) const { return changedPart(expected, desktop.screenshot(), belowPanels).has_value(); }

    bool showsCrosshair(int x = 600, int y = 400)
    {
        desktop.pointer().moveTo(x, y);
        const auto expected = withCrosshair(beneath, x, y);
        return waitUntil([&] { return !differsFrom(expected); }, 5s);
    }

    // Something round the pointer and nothing elsewhere.
    bool showsLoupe()
    {
        desktop.pointer().moveTo(600, 400);
        return waitUntil(
            [&] {
                const auto part = changedPart(beneath, desktop.screenshot(), belowPanels);
                return part && part->x > 400 && part->right() < 800 && part->y > 200 && part->bottom() < 600 && part->width > 60 && part->height > 60;
            },
            5s);
    }

    bool showsNothing()
    {
        return waitUntil([&] { return !differsFrom(beneath); }, 5s);
    }

    bool hasNoMenu() { return waitForNoMenu(desktop); }
    bool opensAMenu()
    {
        return waitUntil([&] { return !openMenus(desktop.connection()).empty(); }, 1s);
    }

    void closeMenu()
    {
        waitForMenu(desktop);
        desktop.keyboard().tap(KEY_ESC);
        EXPECT_TRUE(hasNoMenu());
    }

    bool isHotKeyFree() const { return !isHotKeyTaken(desktop.displayName(), KEY_X, XCB_MOD_MASK_4 | XCB_MOD_MASK_1); }
};

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
    EXPECT_TRUE(hasNoMenu());
    item.activate();
    EXPECT_TRUE(showsNothing());
}

TEST_F(BusStatusItem, TogglesTheLoupeOnALeftClick)
{
    const auto item = startWithHost(loupeMode);
    item.activate();
    EXPECT_TRUE(showsLoupe());
    EXPECT_TRUE(hasNoMenu());
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
    EXPECT_TRUE(isHotKeyFree());
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

struct EmbeddedStatusItem : StatusItemScene {
    Trayer trayer{desktop};
    PrivateBus bus{desktop.home(), {}};  // as on every desktop; no tray is on it

    DeviceRect startAndFind(const std::string& settings = {})
    {
        start(bus.address(), settings);
        return waitForIcon(desktop, beneath, Trayer::frame);
    }
};

TEST_F(EmbeddedStatusItem, OpensTheMenuOnEveryClick)
{
    const auto icon = startAndFind();
    click(desktop, icon, 3);
    closeMenu();
    desktop.keyboard().press(KEY_LEFTCTRL);
    click(desktop, icon, 1);
    waitForMenu(desktop);
    desktop.keyboard().release(KEY_LEFTCTRL);
    closeMenu();
    click(desktop, icon, 1);
    clickFirstEntry(desktop, waitForMenu(desktop));
    EXPECT_TRUE(showsCrosshair());
    EXPECT_EQ(program->standardError(), "");
}

TEST_F(EmbeddedStatusItem, ClosesTheMenuOnTheNextClickOnTheIcon)
{
    const auto icon = startAndFind();
    click(desktop, icon, 1);
    EXPECT_FALSE(waitForMenu(desktop).contains({icon.x + icon.width / 2, icon.y + icon.height / 2}));
    desktop.pointer().click(1);
    EXPECT_TRUE(hasNoMenu());
    EXPECT_FALSE(opensAMenu());
    EXPECT_TRUE(showsNothing());
    click(desktop, icon, 1);
    clickFirstEntry(desktop, waitForMenu(desktop));
    EXPECT_TRUE(showsCrosshair());
}

TEST_F(EmbeddedStatusItem, ShowsTheCrosshairOnALeftClickAndTheMenuOnOthers)
{
    const auto icon = startAndFind(crosshairMode);
    click(desktop, icon, 3);
    closeMenu();
    desktop.keyboard().press(KEY_LEFTCTRL);
    click(desktop, icon, 1);
    waitForMenu(desktop);
    desktop.keyboard().release(KEY_LEFTCTRL);
    closeMenu();
    EXPECT_TRUE(showsNothing());
    click(desktop, icon, 1);
    EXPECT_TRUE(showsCrosshair());
    EXPECT_TRUE(hasNoMenu());
}

TEST_F(EmbeddedStatusItem, ShowsTheLoupeOnALeftClick)
{
    const auto icon = startAndFind(loupeMode);
    click(desktop, icon, 1);
    EXPECT_TRUE(showsLoupe());
    EXPECT_TRUE(hasNoMenu());
}

TEST_F(EmbeddedStatusItem, LetsAShortcutWorkOnceWhileItsMenuIsOpen)
{
    click(desktop, startAndFind(), 1);
    waitForMenu(desktop);
    pressCrosshairShortcut();

    EXPECT_TRUE(showsCrosshair());
}

TEST_F(EmbeddedStatusItem, IsThereWithoutAnyBus)
{
    start("unix:path=" + (desktop.home() / "no-bus").string());
    click(desktop, waitForIcon(desktop, beneath, Trayer::frame), 1);
    clickFirstEntry(desktop, waitForMenu(desktop));
    EXPECT_TRUE(showsCrosshair());
    EXPECT_EQ(program->standardError(), "");
}

TEST_F(EmbeddedStatusItem, QuitsTheProgramByTheMenusLastEntry)
{
    click(desktop, startAndFind(), 1);
    clickLastEntry(desktop, waitForMenu(desktop));
    EXPECT_EQ(program->process().waitForExit(20s), 0);
    EXPECT_TRUE(isHotKeyFree());
    EXPECT_TRUE(waitUntil([&] { return !changedPart(beneath, desktop.screenshot(), Trayer::frame); }));
}

struct PanelStatusItem : StatusItemScene {
    XfcePanel panel{desktop};

    DeviceRect startAndFind(const std::string& settings = {})
    {
        start(panel.busAddress(), settings);
        return waitForIcon(desktop, beneath, XfcePanel::frame);
    }
};

TEST_F(PanelStatusItem, OpensTheMenuOnEveryClick)
{
    const auto icon = startAndFind();
    click(desktop, icon, 3);
    closeMenu();
    click(desktop, icon, 1);
    closeMenu();
    EXPECT_TRUE(showsNothing());
    click(desktop, icon, 3);
    clickFirstEntry(desktop, waitForMenu(desktop));
    EXPECT_TRUE(showsCrosshair());
    EXPECT_EQ(program->standardError(), "");
}

TEST_F(PanelStatusItem, OpensTheMenuOnARightClickInEveryMode)
{
    click(desktop, startAndFind(crosshairMode), 3);
    clickFirstEntry(desktop, waitForMenu(desktop));
    EXPECT_TRUE(showsCrosshair());
}

TEST_F(PanelStatusItem, ClosesTheMenuOnTheNextClickOnTheIcon)
{
    const auto icon = startAndFind();
    click(desktop, icon, 1);
    EXPECT_FALSE(waitForMenu(desktop).contains({icon.x + icon.width / 2, icon.y + icon.height / 2}));
    desktop.pointer().click(1);
    EXPECT_TRUE(hasNoMenu());
    EXPECT_FALSE(opensAMenu());
    EXPECT_TRUE(showsNothing());
    click(desktop, icon, 1);
    clickFirstEntry(desktop, waitForMenu(desktop));
    EXPECT_TRUE(showsCrosshair());
}

TEST_F(PanelStatusItem, ShowsTheCrosshairOnALeftClickAndTheMenuOnOthers)
{
    const auto icon = startAndFind(crosshairMode);
    click(desktop, icon, 3);
    closeMenu();
    desktop.keyboard().press(KEY_LEFTCTRL);
    click(desktop, icon, 1);
    waitForMenu(desktop);
    desktop.keyboard().release(KEY_LEFTCTRL);
    closeMenu();
    EXPECT_TRUE(showsNothing());
    click(desktop, icon, 1);
    EXPECT_TRUE(showsCrosshair());
    EXPECT_TRUE(hasNoMenu());
}

TEST_F(PanelStatusItem, ShowsTheLoupeOnALeftClick)
{
    const auto icon = startAndFind(loupeMode);
    click(desktop, icon, 1);
    EXPECT_TRUE(showsLoupe());
    EXPECT_TRUE(hasNoMenu());
}

TEST_F(PanelStatusItem, ShowsTheCrosshairOnEveryLeftClick)
{
    const auto icon = startAndFind(crosshairMode);
    for (int i = 0; i < 5; ++i) {
        click(desktop, icon, 1);
        ASSERT_TRUE(showsCrosshair()) << i;
        desktop.keyboard().tap(KEY_ESC);
        ASSERT_TRUE(showsNothing()) << i;
    }
}

TEST_F(PanelStatusItem, QuitsTheProgramByTheMenusLastEntry)
{
    click(desktop, startAndFind(), 3);
    clickLastEntry(desktop, waitForMenu(desktop));
    EXPECT_EQ(program->process().waitForExit(20s), 0);
    EXPECT_TRUE(isHotKeyFree());
    EXPECT_TRUE(waitUntil([&] { return !changedPart(beneath, desktop.screenshot(), XfcePanel::frame); }));
}

}  // namespace

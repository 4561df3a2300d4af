// The icon in real trays, with real clicks: embedded in trayer, and over D-Bus in
// xfce4-panel, which draws the menu of a right click itself.
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include <optional>
#include <ostream>

#include "EndToEnd/ExpectedScreen.h"
#include "EndToEnd/StatusItemScene.h"
#include "Support/Desktop/PopupMenus.h"
#include "Support/Desktop/PrivateBus.h"
#include "Support/Desktop/TrayIcon.h"
#include "Support/Desktop/Trayer.h"
#include "Support/Desktop/XfcePanel.h"
#include "Support/WaitUntil.h"

using namespace TestSupport;
using Platform::X11::DeviceRect;

namespace {

constexpr std::uint8_t buttons[] = {1, 3};

enum class TrayProgram { trayer, xfcePanel };

std::string nameOf(TrayProgram tray) { return tray == TrayProgram::trayer ? "trayer" : "xfcePanel"; }

void PrintTo(TrayProgram tray, std::ostream* stream) { *stream << nameOf(tray); }

struct RealTray : StatusItemScene, testing::WithParamInterface<TrayProgram> {
    std::optional<Trayer> trayer;
    std::optional<PrivateBus> trayersBus;  // as on every desktop; no tray is on it
    std::optional<XfcePanel> panel;

    RealTray()
    {
        if (GetParam() == TrayProgram::trayer) {
            trayer.emplace(desktop);
            trayersBus.emplace(desktop.home(), Process::Options{});
        } else {
            panel.emplace(desktop);
        }
    }

    DeviceRect frame() const { return panel ? XfcePanel::frame : Trayer::frame; }

    DeviceRect startAndFind(const std::string& settings = {})
    {
        start(panel ? panel->busAddress() : trayersBus->address(), settings);
        return waitForIcon(desktop, beneath, frame());
    }

    void controlClick(const DeviceRect& icon)
    {
        desktop.keyboard().press(KEY_LEFTCTRL);
        click(desktop, icon, 1);
        waitForMenu(desktop);
        desktop.keyboard().release(KEY_LEFTCTRL);
    }
};

TEST_P(RealTray, OpensTheMenuOnEveryClick)
{
    const auto icon = startAndFind();
    click(desktop, icon, 3);
    closeMenu();
    controlClick(icon);
    closeMenu();
    click(desktop, icon, 1);
    closeMenu();
    EXPECT_TRUE(showsNothing());
    for (const auto button : buttons) {
        click(desktop, icon, button);
        clickFirstEntry(desktop, waitForMenu(desktop));
        EXPECT_TRUE(showsCrosshair());
        desktop.keyboard().tap(KEY_ESC);
        EXPECT_TRUE(showsNothing());
    }
    EXPECT_EQ(program->standardError(), "");
}

TEST_P(RealTray, OpensTheMenuOnARightClickInEveryMode)
{
    click(desktop, startAndFind(crosshairMode), 3);
    clickFirstEntry(desktop, waitForMenu(desktop));
    EXPECT_TRUE(showsCrosshair());
}

TEST_P(RealTray, ClosesTheMenuOnTheNextClickOnTheIcon)
{
    const auto icon = startAndFind();
    click(desktop, icon, 1);
    EXPECT_FALSE(waitForMenu(desktop).contains({icon.x + icon.width / 2, icon.y + icon.height / 2}));
    desktop.pointer().click(1);
    EXPECT_TRUE(waitForNoMenu(desktop));
    EXPECT_FALSE(opensAMenu());
    EXPECT_TRUE(showsNothing());
    click(desktop, icon, 1);
    clickFirstEntry(desktop, waitForMenu(desktop));
    EXPECT_TRUE(showsCrosshair());
}

TEST_P(RealTray, ShowsTheCrosshairOnALeftClickAndTheMenuOnOthers)
{
    const auto icon = startAndFind(crosshairMode);
    click(desktop, icon, 3);
    closeMenu();
    controlClick(icon);
    closeMenu();
    EXPECT_TRUE(showsNothing());
    click(desktop, icon, 1);
    EXPECT_TRUE(showsCrosshair());
    EXPECT_TRUE(waitForNoMenu(desktop));
}

TEST_P(RealTray, ShowsTheLoupeOnALeftClick)
{
    click(desktop, startAndFind(loupeMode), 1);
    EXPECT_TRUE(showsLoupe());
    EXPECT_TRUE(waitForNoMenu(desktop));
}

TEST_P(RealTray, ShowsTheCrosshairOnEveryLeftClick)
{
    const auto icon = startAndFind(crosshairMode);
    for (int i = 0; i < 5; ++i) {
        click(desktop, icon, 1);
        ASSERT_TRUE(showsCrosshair()) << i;
        desktop.keyboard().tap(KEY_ESC);
        ASSERT_TRUE(showsNothing()) << i;
    }
}

TEST_P(RealTray, LetsAShortcutWorkOnceWhileItsMenuIsOpen)
{
    click(desktop, startAndFind(), 1);
    waitForMenu(desktop);
    pressCrosshairShortcut();
    EXPECT_TRUE(showsCrosshair());
}

TEST_P(RealTray, LiesBeneathTheCrosshair)
{
    startAndFind();
    beneath = desktop.screenshotAtRest();
    pressCrosshairShortcut();
    for (const auto& [x, y] : {std::pair{1200, 400}, {1200, 10}}) {
        desktop.pointer().moveTo(x, y);
        const auto expected = withCrosshair(beneath, x, y);
        EXPECT_TRUE(waitUntil([&] { return desktop.screenshot() == expected; })) << difference(expected, desktop.screenshot()).value_or("");
    }
}

TEST_P(RealTray, QuitsTheProgramByTheMenusLastEntry)
{
    for (const auto button : buttons) {
        click(desktop, startAndFind(), button);
        clickLastEntry(desktop, waitForMenu(desktop));
        EXPECT_EQ(program->process().waitForExit(std::chrono::seconds(20)), 0);
        EXPECT_TRUE(isCrosshairShortcutFree());
        EXPECT_TRUE(waitUntil([&] { return !changedPart(beneath, desktop.screenshot(), frame()); }));
    }
}

INSTANTIATE_TEST_SUITE_P(
    In, RealTray, testing::Values(TrayProgram::trayer, TrayProgram::xfcePanel), [](const auto& parameter) { return nameOf(parameter.param); });

struct EmbeddingTrayAlone : StatusItemScene {
    Trayer trayer{desktop};
};

TEST_F(EmbeddingTrayAlone, ShowsTheIconWithoutAnyBus)
{
    start("unix:path=" + (desktop.home() / "no-bus").string());
    click(desktop, waitForIcon(desktop, beneath, Trayer::frame), 1);
    clickFirstEntry(desktop, waitForMenu(desktop));
    EXPECT_TRUE(showsCrosshair());
    EXPECT_EQ(program->standardError(), "");
}

}  // namespace

#include "EndToEnd/StatusItemScene.h"

#include <linux/input-event-codes.h>

#include <fstream>

#include "EndToEnd/ExpectedScreen.h"
#include "Support/Desktop/ForeignHotKey.h"
#include "Support/Desktop/PopupMenus.h"
#include "Support/Desktop/TrayIcon.h"
#include "Support/WaitUntil.h"

namespace TestSupport {

using Platform::X11::DeviceRect;
using namespace std::chrono_literals;

namespace {

// What lies below the panels, and what they show for a moment beside them.
constexpr DeviceRect belowPanels{0, 150, 1280, 650};

bool isShown(const Desktop& desktop, const Platform::Image& expected)
{
    return waitUntil([&] { return !changedPart(expected, desktop.screenshot(), belowPanels); }, 5s);
}

}  // namespace

void StatusItemScene::writeSettings(const std::string& contents) const
{
    const auto file = desktop.home() / "tarnwick-home" / "tarnwick" / "defaults.json";
    std::filesystem::create_directories(file.parent_path());
    const auto fresh = file.string() + ".new";
    std::ofstream(fresh) << contents;
    std::filesystem::rename(fresh, file);
}

void StatusItemScene::start(const std::string& busAddress, const std::string& settings)
{
    desktop.pointer().moveTo(600, 400);
    beneath = desktop.screenshotAtRest();
    if (!settings.empty())
        writeSettings(settings);
    program.emplace(desktop, TarnwickProgram::Environment{{"DBUS_SESSION_BUS_ADDRESS", busAddress}});
    program->waitUntilReady();
}

void StatusItemScene::pressCrosshairShortcut() { desktop.keyboard().chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_X}); }

void StatusItemScene::pressLoupeShortcut() { desktop.keyboard().chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_L}); }

bool StatusItemScene::showsCrosshair(int x, int y)
{
    desktop.pointer().moveTo(x, y);
    return isShown(desktop, withCrosshair(beneath, x, y));
}

// Something round the pointer and nothing elsewhere.
bool StatusItemScene::showsLoupe()
{
    desktop.pointer().moveTo(600, 400);
    return waitUntil(
        [&] {
            const auto part = changedPart(beneath, desktop.screenshot(), belowPanels);
            return part && part->x > 400 && part->right() < 800 && part->y > 200 && part->bottom() < 600 && part->width > 60 && part->height > 60;
        },
        5s);
}

bool StatusItemScene::showsNothing() { return isShown(desktop, beneath); }

bool StatusItemScene::opensAMenu()
{
    return waitUntil([&] { return !openMenus(desktop.connection()).empty(); }, 1s);
}

void StatusItemScene::closeMenu()
{
    waitForMenu(desktop);
    desktop.keyboard().tap(KEY_ESC);
    EXPECT_TRUE(waitForNoMenu(desktop));
}

bool StatusItemScene::isCrosshairShortcutFree() const { return !isHotKeyTaken(desktop.displayName(), KEY_X, XCB_MOD_MASK_4 | XCB_MOD_MASK_1); }

}  // namespace TestSupport

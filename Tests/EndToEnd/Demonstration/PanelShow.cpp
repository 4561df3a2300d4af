#include "EndToEnd/Demonstration/PanelShow.h"

#include <cstdio>

#include "EndToEnd/Demonstration/Pictures.h"
#include "EndToEnd/TarnwickProgram.h"
#include "Support/Desktop/PopupMenus.h"
#include "Support/Desktop/TrayIcon.h"
#include "Support/Desktop/Wallpaper.h"
#include "Support/Desktop/XfcePanel.h"

namespace Demonstration {

using namespace TestSupport;

bool showPanel(const std::filesystem::path& folder)
{
    Desktop desktop(WindowManagerKind::openbox);
    const Wallpaper wallpaper(desktop.displayName(), landscape(1280, 800));
    const XfcePanel panel(desktop);
    desktop.pointer().moveTo(640, 700);
    const auto without = desktop.screenshotAtRest();

    TarnwickProgram program(desktop, {{"DBUS_SESSION_BUS_ADDRESS", panel.busAddress()}});
    program.waitUntilReady();
    const auto icon = waitForIcon(desktop, without, XfcePanel::frame);
    std::puts("yes    the panel shows the icon");
    click(desktop, icon, 3);
    const auto menu = waitForMenu(desktop);
    std::puts("yes    a right click opens the menu");

    desktop.pointer().moveTo(640, 700);
    constexpr int margin = 24;
    const auto shown = Platform::X11::boundsOf(icon, menu);
    const auto around = Platform::X11::intersection({shown.x - 4 * margin, 0, shown.width + 5 * margin, shown.bottom() + margin}, {0, 0, 1280, 800});
    std::filesystem::create_directories(folder);
    write(folder / "tray-menu.png", part(desktop.screenshotAtRest(), around));
    clickLastEntry(desktop, menu);
    const bool hasEnded = program.process().waitForExit(std::chrono::seconds(20)) == 0;
    std::printf("%-6s %s\n", hasEnded ? "yes" : "NO", "its last entry ends the program");
    return hasEnded;
}

}  // namespace Demonstration

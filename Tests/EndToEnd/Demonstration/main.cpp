// Runs the program on a desktop of its own (X server, window manager, wallpaper, windows),
// presses real keys, checks what the screen shows and leaves pictures of it. The same
// fonts and window manager give the same pictures, byte for byte.
//
//   tarnwick_demonstration FOLDER
#include <linux/input-event-codes.h>

#include <QGuiApplication>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string>
#include <vector>

#include "EndToEnd/Demonstration/Pictures.h"
#include "EndToEnd/ExpectedScreen.h"
#include "EndToEnd/TarnwickProgram.h"
#include "Support/Desktop/Desktop.h"
#include "Support/Desktop/TestWindow.h"
#include "Support/Desktop/VisibleCursor.h"
#include "Support/Desktop/Wallpaper.h"
#include "Support/TemporaryFolder.h"
#include "Support/WaitUntil.h"

using namespace TestSupport;
using Platform::X11::DevicePoint;

namespace {

class Show {
public:
    explicit Show(std::filesystem::path folder) : m_folder(std::move(folder))
    {
        std::filesystem::create_directories(m_folder);
        m_desktop.pointer().moveTo(m_position.x, m_position.y);
        m_page.activate();
        m_program.waitUntilReady();
        m_beneath = m_desktop.screenshotAtRest();
        takeEvents();
    }

    bool run()
    {
        std::puts("The pointer's picture is a pink square here, so that it can be found.");
        photograph("1-desktop");
        pressShortcut();
        lookForCrosshair("Super+Alt+X pressed", "2-crosshair");
        Demonstration::write(m_folder / "crosshair.png", Demonstration::part(m_desktop.screenshot(), {100, 100, 840, 520}));
        moveTo({765, 290});
        lookForCrosshair("Pointer moved", "3-crosshair-followed");
        m_desktop.pointer().click(1);
        m_desktop.keyboard().tap(KEY_A);
        lookForCrosshair("Clicked and typed", "4-crosshair-stays");
        say("no window received a key or a click", takeEvents() == Events{});
        m_desktop.keyboard().tap(KEY_ESC);
        lookForDesktop("Escape pressed", "5-dismissed");
        lookForKeysInPage();
        say("the program ends when asked to", m_program.end().empty());
        return m_isAllRight;
    }

private:
    using Events = std::vector<std::string>;

    void pressShortcut() { m_desktop.keyboard().chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_X}); }

    void moveTo(DevicePoint position)
    {
        m_position = position;
        m_desktop.pointer().moveTo(position.x, position.y);
    }

    void lookForCrosshair(const std::string& what, const std::string& name)
    {
        const auto expected = withCrosshair(m_beneath, m_position.x, m_position.y);
        const bool isShown = waitUntil([&] { return m_desktop.screenshot() == expected; });
        say(what + ": both lines are there, every pixel the inverse of what lies beneath, all else unchanged", isShown);
        say("the pointer's picture is hidden", waitUntil([&] { return !showsCursor(); }));
        photograph(name);
        Demonstration::write(m_folder / (name + "-close-up.png"), Demonstration::closeUp(m_desktop.screenshot(), m_position));
    }

    void lookForDesktop(const std::string& what, const std::string& name)
    {
        say(what + ": the screen is as it was before", waitUntil([&] { return m_desktop.screenshot() == m_beneath; }));
        say("the pointer's picture is back", waitUntil([&] { return showsCursor(); }));
        photograph(name);
    }

    void lookForKeysInPage()
    {
        m_desktop.keyboard().tap(KEY_B);
        Events events;
        const auto hasArrived = [&] { return (events = takeEvents()) == Events{"KeyPress 48", "KeyRelease 48"}; };
        say("typed: the window that had the focus before receives it", waitUntil(hasArrived));
    }

    // What reached the windows since the last call, but for modifier keys: alone they do
    // nothing, so the overlay lets them pass, and those of the shortcut come before it is up.
    Events takeEvents()
    {
        Events events = m_page.takeEvents();
        std::ranges::move(m_chart.takeEvents(), std::back_inserter(events));
        std::erase_if(events, [](const std::string& event) { return event.ends_with(" 125") || event.ends_with(" 56"); });
        return events;
    }

    bool showsCursor() const { return showsVisibleCursor(m_desktop.frameBuffer().read(), m_position.x, m_position.y); }

    void photograph(const std::string& name) const { Demonstration::write(m_folder / (name + ".png"), m_desktop.frameBuffer().read()); }

    void say(const std::string& what, bool isTrue)
    {
        std::printf("%-6s %s\n", isTrue ? "yes" : "NO", what.c_str());
        m_isAllRight = m_isAllRight && isTrue;
    }

    const std::filesystem::path m_folder;
    Desktop m_desktop{WindowManagerKind::openbox};
    const Wallpaper m_wallpaper{m_desktop.displayName(), Demonstration::landscape(1280, 800)};
    TestWindow m_chart{m_desktop.displayName(), "Colours", {580, 150}, Demonstration::colourChart(320, 240)};
    TestWindow m_page{m_desktop.displayName(), "A page", {140, 210}, Demonstration::page(400, 340)};
    TarnwickProgram m_program{m_desktop};
    DevicePoint m_position{373, 325};
    Platform::Image m_beneath;
    bool m_isAllRight = true;
};

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fputs("usage: tarnwick_demonstration FOLDER\n", stderr);
        return EXIT_FAILURE;
    }
    const TemporaryFolder runtimeFolder;
    setenv("XDG_RUNTIME_DIR", runtimeFolder.path().c_str(), 1);
    setenv("QT_QPA_PLATFORM", "offscreen", 1);  // for painting text
    const QGuiApplication application(argc, argv);
    try {
        return Show(argv[1]).run() ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "error: %s\n", error.what());
        return EXIT_FAILURE;
    }
}

// Runs the program on a desktop of its own (X server, window manager, wallpaper, windows),
// presses real keys, checks what the screen shows and leaves pictures of it.
//
//   tarnwick_demonstration FOLDER
#include <linux/input-event-codes.h>

#include <QGuiApplication>
#include <cstdio>
#include <cstdlib>

#include "EndToEnd/Demonstration/Pictures.h"
#include "EndToEnd/ExpectedScreen.h"
#include "EndToEnd/TarnwickProgram.h"
#include "Support/Desktop/Desktop.h"
#include "Support/Desktop/TestWindow.h"
#include "Support/Desktop/VisibleCursor.h"
#include "Support/Desktop/Wallpaper.h"
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
    }

    bool run()
    {
        photograph("1-desktop");
        pressShortcut();
        lookForCrosshair("Super+Alt+X pressed", "2-crosshair");
        moveTo({905, 372});
        lookForCrosshair("pointer moved", "3-crosshair-followed");
        m_desktop.pointer().click(1);
        m_desktop.keyboard().tap(KEY_A);
        lookForCrosshair("clicked and typed: nothing reached the window", "4-crosshair-stays");
        say("the window received nothing", m_chart.takeEvents().empty());
        m_desktop.keyboard().tap(KEY_ESC);
        lookForDesktop("Escape pressed", "5-dismissed");
        say("the program ends when asked to", m_program.end().empty());
        return m_isAllRight;
    }

private:
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
        Demonstration::write(m_folder / (name + "-close-up.png"), Demonstration::closeUp(m_desktop.screenshot(), m_position.x, m_position.y));
    }

    void lookForDesktop(const std::string& what, const std::string& name)
    {
        say(what + ": the screen is as it was before", waitUntil([&] { return m_desktop.screenshot() == m_beneath; }));
        say("the pointer's picture is back", waitUntil([&] { return showsCursor(); }));
        photograph(name);
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
    TestWindow m_chart{m_desktop.displayName(), "Colours", {700, 130}, Demonstration::colourChart(440, 320)};
    TestWindow m_page{m_desktop.displayName(), "A page", {140, 260}, Demonstration::page(520, 400)};
    TarnwickProgram m_program{m_desktop};
    DevicePoint m_position{430, 380};
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
    setenv("QT_QPA_PLATFORM", "offscreen", 1);  // for painting text
    const QGuiApplication application(argc, argv);
    try {
        return Show(argv[1]).run() ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "error: %s\n", error.what());
        return EXIT_FAILURE;
    }
}

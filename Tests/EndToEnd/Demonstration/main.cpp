// Runs the program on a desktop of its own (X server, window manager, wallpaper, windows),
// presses real keys, checks what the screen shows and leaves pictures of it. The same
// fonts and window manager give the same pictures, byte for byte.
//
//   tarnwick_demonstration FOLDER            the overlays
//   tarnwick_demonstration --panel FOLDER    the icon in xfce4-panel, and its menu
#include <linux/input-event-codes.h>

#include <QGuiApplication>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "EndToEnd/Demonstration/PanelShow.h"
#include "EndToEnd/Demonstration/Pictures.h"
#include "EndToEnd/Demonstration/Stage.h"
#include "EndToEnd/ExpectedLoupe.h"
#include "EndToEnd/ExpectedScreen.h"
#include "Support/TemporaryFolder.h"
#include "Support/WaitUntil.h"

using namespace TestSupport;

namespace {

class CrosshairShow : private Demonstration::Stage {
public:
    explicit CrosshairShow(const std::filesystem::path& folder) : Stage(folder, WindowManagerKind::openbox, {373, 325}) { }

    bool run()
    {
        std::puts("The pointer's picture is a pink square here, so that it can be found.");
        photograph("1-desktop");
        desktop().keyboard().chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_X});
        lookForCrosshair("Super+Alt+X pressed", "2-crosshair");
        photograph("crosshair", {100, 100, 840, 520});
        moveTo({765, 290});
        lookForCrosshair("Pointer moved", "3-crosshair-followed");
        desktop().pointer().click(1);
        tap(KEY_A);
        lookForCrosshair("Clicked and typed", "4-crosshair-stays");
        say("no window received a key or a click", takeEvents().empty());
        tap(KEY_ESC);
        sayWhetherTheDesktopIsBack("Escape pressed");
        photograph("5-dismissed");
        lookForKeysInPage();
        return end();
    }

private:
    using Events = std::vector<std::string>;

    void lookForCrosshair(const std::string& what, const std::string& name)
    {
        const auto expected = withCrosshair(beneath(), pointer().x, pointer().y);
        const bool isShown = waitUntil([&] { return desktop().screenshot() == expected; });
        say(what + ": both lines are there, every pixel the inverse of what lies beneath, all else unchanged", isShown);
        sayWhetherThePointerIsHidden();
        photograph(name);
        Demonstration::write(folder() / (name + "-close-up.png"), Demonstration::closeUp(desktop().screenshot(), pointer()));
    }

    void lookForKeysInPage()
    {
        tap(KEY_B);
        Events events;
        const auto hasArrived = [&] { return (events = takeEvents()) == Events{"KeyPress 48", "KeyRelease 48"}; };
        say("typed: the window that had the focus before receives it", waitUntil(hasArrived));
    }
};

class LoupeShow : private Demonstration::Stage {
public:
    explicit LoupeShow(const std::filesystem::path& folder) : Stage(folder, WindowManagerKind::openboxWithPicom, {374, 327}) { }

    bool run()
    {
        desktop().keyboard().chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_L});
        lookForLoupe("Super+Alt+L pressed", "6-loupe", {});
        photograph("loupe", {100, 100, 840, 520});
        moveTo({740, 294});
        lookForLoupe("Pointer moved", "7-loupe-followed", {});
        tap(KEY_2);
        tap(KEY_DOT);
        lookForLoupe("\"2\" and \".\" pressed", "8-loupe-larger", {.diameter = 260, .sampleSide = 51});
        tap(KEY_ESC);
        sayWhetherTheDesktopIsBack("Escape pressed");
        return end();
    }

private:
    void lookForLoupe(const std::string& what, const std::string& name, ExpectedLoupe loupe)
    {
        loupe.x = pointer().x;
        loupe.y = pointer().y;
        loupe.isBlended = true;
        const bool isShown = waitUntil([&] { return !whatIsWrong(loupe, beneath(), desktop().screenshot()); });
        say(what + ": the loupe magnifies every pixel around the pointer, all around it is unchanged", isShown);
        sayWhetherThePointerIsHidden();
        photograph(name);
    }
};

bool runShows(int argc, char** argv)
{
    const TemporaryFolder runtimeFolder;
    setenv("XDG_RUNTIME_DIR", runtimeFolder.path().c_str(), 1);
    setenv("QT_QPA_PLATFORM", "offscreen", 1);  // for painting text
    const QGuiApplication application(argc, argv);
    if (argc == 3)
        return Demonstration::showPanel(argv[2]);
    const bool isCrosshairRight = CrosshairShow(argv[1]).run();
    const bool isLoupeRight = LoupeShow(argv[1]).run();
    return isCrosshairRight && isLoupeRight;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2 && !(argc == 3 && std::string_view(argv[1]) == "--panel")) {
        std::fputs("usage: tarnwick_demonstration [--panel] FOLDER\n", stderr);
        return EXIT_FAILURE;
    }
    try {
        return runShows(argc, argv) ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "error: %s\n", error.what());
        return EXIT_FAILURE;
    }
}

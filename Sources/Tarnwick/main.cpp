#include <sys/signalfd.h>
#include <unistd.h>

#include <QApplication>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "KeyboardShortcuts/KeyboardShortcuts.h"
#include "Platform/Qt/QtRootEvents.h"
#include "Platform/Qt/QtShapePainter.h"
#include "Platform/X11/Connection.h"
#include "Tarnwick/CrosshairController.h"
#include "Tarnwick/DesktopSystem.h"
#include "Tarnwick/LoupeOverlayWindow.h"

namespace {

// Ends the program in an orderly way: overlays gone, cursor back, grabs freed.
Platform::Token quitOnSignals(Platform::FileDescriptorWatcher& watcher, const sigset_t& signals)
{
    const int descriptor = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    return watcher.watch(descriptor, [] { QCoreApplication::quit(); });
}

// Before any thread starts, so that none of them takes the signals.
sigset_t blockEndingSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&signals, number);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

bool canUseTheDisplay()
{
    const auto* display = std::getenv("DISPLAY");
    if (display == nullptr || *display == '\0') {
        std::fputs("tarnwick: DISPLAY is not set; an X11 desktop (or XWayland) is needed\n", stderr);
        return false;
    }
    if (!Platform::X11::Connection::open()) {
        std::fprintf(stderr, "tarnwick: the X server at DISPLAY=%s does not answer or refuses this user\n", display);
        return false;
    }
    return true;
}

void sayWhatWaylandMeans()
{
    const auto* session = std::getenv("XDG_SESSION_TYPE");
    if (std::getenv("WAYLAND_DISPLAY") != nullptr || (session != nullptr && std::string_view(session) == "wayland")) {
        std::fputs("tarnwick: this is a Wayland session; only X11 programs' pixels can be seen and shortcuts work only over them\n", stderr);
    }
}

}  // namespace

int main(int argc, char** argv)
{
    const auto signals = blockEndingSignals();
    if (!canUseTheDisplay())
        return EXIT_FAILURE;
    sayWhatWaylandMeans();

    // The program draws with plain X11 requests: no OpenGL library need be loaded.
    setenv("QT_XCB_GL_INTEGRATION", "none", 0);
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    QApplication application(argc, argv);
    QGuiApplication::setApplicationName("Tarnwick");
    QGuiApplication::setApplicationDisplayName("Tarnwick");
    QGuiApplication::setDesktopFileName("org.tarnwick.Tarnwick");
    QGuiApplication::setQuitOnLastWindowClosed(false);
    Platform::ignoreOtherWindowsOnRoot();

    const auto desktop = Tarnwick::DesktopSystem::open();
    if (!desktop)
        return EXIT_FAILURE;
    const auto quitting = quitOnSignals(desktop->fileDescriptorWatcher(), signals);

    auto system = desktop->system();
    const KeyboardShortcuts::Texts texts;
    KeyboardShortcuts::KeyboardShortcuts shortcuts(
        system.userDefaults, system.notifications, system.hotKeys, system.keyboardLayout, system.reservedShortcuts, texts);
    Platform::QtShapePainter shapePainter;
    Tarnwick::CrosshairController controller(system, shortcuts,
        [&](std::function<void()> onDismiss) { return std::make_unique<Tarnwick::LoupeOverlayWindow>(system, shapePainter, std::move(onDismiss)); });
    return QApplication::exec();
}

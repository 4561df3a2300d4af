#include "Tarnwick/DesktopSystem.h"

#include <cstdio>
#include <string>
#include <utility>

#include "KeyboardShortcuts/KeyboardShortcuts.h"
#include "Platform/Freedesktop/DesktopShortcutsModule.h"
#include "Platform/Freedesktop/JsonUserDefaults.h"
#include "Platform/Posix/ThreadSerialQueue.h"
#include "Platform/Qt/QtApplication.h"
#include "Platform/Qt/QtMainLoop.h"
#include "Platform/Qt/QtScreenScales.h"
#include "Platform/Qt/Tray/QtStatusBar.h"
#include "Platform/X11/Capture/X11ScreenCapture.h"
#include "Platform/X11/Connection.h"
#include "Platform/X11/Keys/OverlayKeys.h"
#include "Platform/X11/Keys/X11HotKeyCenter.h"
#include "Platform/X11/Keys/X11KeyboardLayout.h"
#include "Platform/X11/Overlays/X11OverlayWindows.h"
#include "Platform/X11/X11Pointer.h"
#include "Platform/X11/X11Screens.h"

namespace Tarnwick {
namespace {

using namespace Platform::X11;

// All connections go to the display of the environment.
const std::string display;

// What must exist before the rest can be put together.
struct Connections {
    std::unique_ptr<Connection> requests = Connection::open(display);
    std::unique_ptr<Connection> monitorEvents = Connection::open(display);
    std::unique_ptr<Connection> stackEvents = Connection::open(display);
    std::unique_ptr<Connection> focusEvents = Connection::open(display);

    bool areOpen() const { return requests && monitorEvents && stackEvents && focusEvents; }
};

}  // namespace

struct DesktopSystem::Parts {
    // Members are in the order in which they need one another.
    Platform::QtMainLoop mainLoop;
    Platform::QtScreenScales screenScales;
    Platform::Posix::ThreadSerialQueues serialQueues;
    Platform::NotificationCenter notifications;
    Platform::QtStatusBar statusBar{[this](bool isTracking) {
        notifications.post(isTracking ? KeyboardShortcuts::menuDidBeginTracking : KeyboardShortcuts::menuDidEndTracking);
    }};
    Platform::QtApplication application;
    Platform::Freedesktop::JsonUserDefaults userDefaults;
    Platform::Freedesktop::DesktopShortcutsModule reservedShortcuts;
    Connections connections;
    X11KeyboardLayout keyboardLayout;
    std::unique_ptr<OverlayKeys> overlayKeys = OverlayKeys::open(display, mainLoop, mainLoop);
    std::unique_ptr<X11HotKeyCenter> hotKeys = X11HotKeyCenter::open(display, mainLoop, mainLoop);
    SharedMonitorLayout monitorLayout;
    OverlayStack overlayStack;
    std::unique_ptr<X11ScreenCapture> screenCapture = X11ScreenCapture::open(display, monitorLayout, overlayStack);

    // Present once all of the above are.
    std::unique_ptr<X11Screens> screens;
    std::unique_ptr<X11Pointer> pointer;
    std::unique_ptr<X11Cursor> cursor;
    std::unique_ptr<X11OverlayWindows> overlayWindows;

    bool areOpen() const { return connections.areOpen() && overlayKeys && hotKeys && screenCapture; }

    void putTogether()
    {
        screens = std::make_unique<X11Screens>(*connections.requests, *connections.monitorEvents, mainLoop, mainLoop, monitorLayout,
            [this](const std::string& name) { return screenScales.scaleOfScreen(name); });
        screenScales.setChangedHandler([this] { screens->readAgain(); });
        pointer = std::make_unique<X11Pointer>(*connections.requests, monitorLayout);
        cursor = std::make_unique<X11Cursor>(*connections.requests);
        overlayWindows = std::make_unique<X11OverlayWindows>(X11OverlayWindows::Parts{*connections.requests, *connections.stackEvents,
            *connections.focusEvents, mainLoop, mainLoop, monitorLayout, overlayStack, *screenCapture, *overlayKeys});
        hotKeys->setYield([this] { return overlayKeys->suspend(); });
    }
};

std::unique_ptr<DesktopSystem> DesktopSystem::open()
{
    auto parts = std::make_unique<Parts>();
    if (!parts->areOpen()) {
        std::fputs("tarnwick: the X server refuses connections or lacks the XKB extension\n", stderr);
        return nullptr;
    }
    parts->putTogether();
    return std::unique_ptr<DesktopSystem>(new DesktopSystem(std::move(parts)));
}

DesktopSystem::DesktopSystem(std::unique_ptr<Parts> parts) : m_parts(std::move(parts)) { }

DesktopSystem::~DesktopSystem() = default;

Platform::System DesktopSystem::system()
{
    return {m_parts->mainLoop, m_parts->serialQueues, *m_parts->screens, *m_parts->pointer, *m_parts->cursor, *m_parts->screenCapture,
        *m_parts->overlayWindows, *m_parts->hotKeys, m_parts->keyboardLayout, m_parts->reservedShortcuts, m_parts->userDefaults,
        m_parts->notifications, m_parts->statusBar, m_parts->application};
}

Platform::FileDescriptorWatcher& DesktopSystem::fileDescriptorWatcher() { return m_parts->mainLoop; }

}  // namespace Tarnwick

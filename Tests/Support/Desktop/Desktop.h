// A whole desktop of a test's own: X server, window manager, keyboard, pointer, and eyes
// on the screen.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Support/Desktop/FrameBuffer.h"
#include "Support/Desktop/WindowManager.h"
#include "Support/Desktop/XTestPointer.h"
#include "Support/PrivateServer.h"
#include "Support/XTestKeyboard.h"

namespace TestSupport {

class Desktop {
public:
    // `screen` as Xvfb's "-screen 0" wants it. Throws when anything does not come up.
    explicit Desktop(WindowManagerKind, const std::string& screen = "1280x800x24", const std::vector<std::string>& furtherServerArguments = {});

    const PrivateServer& server() const { return m_server; }
    const std::string& displayName() const { return m_server.displayName(); }
    const std::filesystem::path& home() const { return m_home.path(); }
    const FrameBuffer& frameBuffer() const { return m_frameBuffer; }
    Platform::X11::Connection& connection() { return *m_connection; }
    XTestKeyboard& keyboard() { return m_keyboard; }
    XTestPointer& pointer() { return m_pointer; }

    Platform::Image screenshot() const;
    // A picture that has stayed the same for a while: compositors and window managers
    // have finished drawing. Throws when the screen never comes to rest.
    Platform::Image screenshotAtRest() const;

    // The server's focus and the window manager's idea of it.
    xcb_window_t focus() const;
    xcb_window_t activeWindow();

private:
    TemporaryFolder m_home;
    FrameBuffer m_frameBuffer;
    PrivateServer m_server;
    std::unique_ptr<Platform::X11::Connection> m_connection;
    WindowManager m_windowManager;
    XTestKeyboard m_keyboard;
    XTestPointer m_pointer;
};

}  // namespace TestSupport

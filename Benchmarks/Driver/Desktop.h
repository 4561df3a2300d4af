// A whole desktop of the benchmark's own: X server, session bus, wallpaper and windows,
// with or without window manager and compositor. It ends with the object.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "Support/Desktop/FrameBuffer.h"
#include "Support/Desktop/PrivateBus.h"
#include "Support/Desktop/Wallpaper.h"
#include "Support/Desktop/WindowManager.h"
#include "Support/PrivateServer.h"
#include "Support/TemporaryFolder.h"
#include "TenWindows.h"

namespace Benchmarks {

struct Setup {
    std::string screenName;
    int width = 0;
    int height = 0;
    bool hasCompositor = false;
    bool hasWindows = true;
    bool hasMonitor = false;  // what one would show can be read

    std::string name() const { return screenName + (hasCompositor ? ", picom" : ", no compositor"); }
};

class Desktop {
public:
    // Returns when everything has come to rest. Throws when a part does not come up.
    explicit Desktop(const Setup&);

    const std::string& displayName() const { return m_server.displayName(); }
    // Nothing without a monitor.
    const TestSupport::FrameBuffer* monitor() const { return m_monitor ? &*m_monitor : nullptr; }
    pid_t serverPid() { return m_server.process().pid(); }
    std::optional<pid_t> compositorPid() const;
    std::filesystem::path home() const { return m_home.path(); }

    // Starts a program on this desktop; what it says on standard error is appended to
    // standardErrorPath().
    TestSupport::Process start(const std::vector<std::string>& command) const;
    std::filesystem::path standardErrorPath() const { return home() / "standard-error"; }

private:
    void startCompositor();
    TestSupport::Process::Options options() const;

    TestSupport::TemporaryFolder m_home;
    std::optional<TestSupport::FrameBuffer> m_monitor;
    TestSupport::PrivateServer m_server;
    TestSupport::PrivateBus m_bus;
    TestSupport::Wallpaper m_wallpaper;
    TestSupport::WindowManager m_windowManager;
    TestSupport::Process m_compositor;
    std::optional<TenWindows> m_windows;
};

// Returns when the process has used no processor time for 0.3 s.
void waitUntilAtRest(pid_t);

}  // namespace Benchmarks

#include "Desktop.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>

#include "ProcessFigures.h"
#include "Support/Desktop/TestPattern.h"
#include "Support/WaitUntil.h"

namespace Benchmarks {
namespace {

using namespace std::chrono_literals;
using Platform::X11::Connection;

std::string screenArgument(const Setup& setup) { return std::to_string(setup.width) + "x" + std::to_string(setup.height) + "x24"; }

// A small picture repeated: computing one of 8K would take seconds.
Platform::Image wallpaper(int width, int height)
{
    const auto tile = TestSupport::testPattern(640, 360, 0);
    Platform::Image image(width, height);
    auto row = image.pixels().begin();
    for (int y = 0; y < height; ++y, row += width) {
        const auto* from = tile.pixels().data() + static_cast<std::ptrdiff_t>(y % tile.height()) * tile.width();
        for (int x = 0; x < width; x += tile.width())
            std::copy_n(from, std::min(tile.width(), width - x), row + x);
    }
    return image;
}

}  // namespace

Desktop::Desktop(const Setup& setup)
    : m_monitor(setup.hasMonitor ? std::make_optional<TestSupport::FrameBuffer>() : std::nullopt),
      m_server(screenArgument(setup), m_monitor ? m_monitor->serverArguments() : std::vector<std::string>()), m_bus(m_home.path(), options()),
      m_wallpaper(m_server.displayName(), wallpaper(setup.width, setup.height)),
      m_windowManager(m_server, setup.hasCompositor ? TestSupport::WindowManagerKind::openbox : TestSupport::WindowManagerKind::none, m_home.path())
{
    if (setup.hasCompositor)
        startCompositor();
    if (setup.hasWindows)
        m_windows.emplace(displayName());
    if (setup.hasCompositor)
        waitUntilAtRest(m_compositor.pid());
    waitUntilAtRest(serverPid());
}

void Desktop::startCompositor()
{
    const auto connection = Connection::open(displayName());
    m_compositor = start({"picom", "--backend", "xrender", "--config", "/dev/null"});
    if (!TestSupport::waitUntil([&] { return connection->hasCompositor(); }))
        throw std::runtime_error("picom did not start");
}

std::optional<pid_t> Desktop::compositorPid() const { return m_compositor.pid() != 0 ? std::optional(m_compositor.pid()) : std::nullopt; }

TestSupport::Process Desktop::start(const std::vector<std::string>& command) const
{
    auto choices = options();
    choices.environment.emplace_back("DBUS_SESSION_BUS_ADDRESS", m_bus.address());
    return m_server.start(command, choices);
}

// Nothing of the person's own desktop and settings is seen.
TestSupport::Process::Options Desktop::options() const
{
    TestSupport::Process::Options options;
    options.standardError = standardErrorPath();
    options.environment = {
        {"DISPLAY", displayName()}, {"WAYLAND_DISPLAY", ""}, {"XDG_SESSION_TYPE", "x11"}, {"XDG_CURRENT_DESKTOP", ""}, {"LANG", "C.UTF-8"}};
    for (const auto* name : {"HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_RUNTIME_DIR"})
        options.environment.emplace_back(name, home());
    return options;
}

void waitUntilAtRest(pid_t pid)
{
    auto usedBefore = processorTime(pid);
    auto atRestSince = std::chrono::steady_clock::now();
    const auto isAtRest = [&] {
        const auto now = std::chrono::steady_clock::now();
        if (const auto used = processorTime(pid); used != usedBefore) {
            usedBefore = used;
            atRestSince = now;
        }
        return now - atRestSince >= 300ms;
    };
    if (!TestSupport::waitUntil(isAtRest, 60s))
        throw std::runtime_error("process " + std::to_string(pid) + " does not come to rest");
}

}  // namespace Benchmarks

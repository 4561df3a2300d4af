#include "RestBenchmark.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <stdexcept>
#include <thread>

#include "Crosshair.h"
#include "Platform/X11/Keys/ModifierMap.h"
#include "Support/Desktop/ForeignHotKey.h"
#include "Support/Desktop/XTestPointer.h"
#include "Support/WaitUntil.h"

namespace Benchmarks {
namespace {

constexpr double mebibyte = 1024.0 * 1024.0;

std::map<std::string, long> wakeUpsDuring(pid_t pid, std::chrono::seconds length)
{
    const auto before = voluntarySwitches(pid);
    std::this_thread::sleep_for(length);
    std::map<std::string, long> wakeUps;
    for (const auto& [thread, count] : voluntarySwitches(pid)) {
        const auto known = before.find(thread);
        const auto more = known == before.end() ? count : count - known->second;
        if (more > 0)
            wakeUps[thread] = more;
    }
    return wakeUps;
}

// Some of what a crosshair needs comes with its first ticks.
long mostOwnBytesOfAWhile(pid_t pid)
{
    using Clock = std::chrono::steady_clock;
    long most = 0;
    for (const auto end = Clock::now() + std::chrono::milliseconds(500); Clock::now() < end;) {
        most = std::max(most, ownBytes(pid));
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return most;
}

long serverMemoryOfCrosshair(const Options& options, bool hasWindows)
{
    auto setup = options.memorySetup;
    setup.hasWindows = hasWindows;
    Desktop desktop(setup);
    TestSupport::XTestPointer(desktop.displayName()).moveTo(setup.width / 3, setup.height / 3);
    Crosshair crosshair(desktop, options.programPath);
    const auto before = ownBytes(desktop.serverPid());
    crosshair.show();
    // The keys come after the picture.
    if (!TestSupport::waitUntil([&] { return TestSupport::isHotKeyTaken(desktop.displayName(), KEY_ESC, 0); }))
        throw std::runtime_error("the crosshair does not take the keys");
    const auto more = mostOwnBytesOfAWhile(desktop.serverPid()) - before;
    crosshair.hide();
    return more;
}

// The grabs of all keys that are no modifiers, with any modifiers, are part of every
// overlay, whatever it shows. What one takes depends on the server alone.
long serverMemoryOfKeyGrabs(const Options& options)
{
    auto setup = options.memorySetup;
    setup.hasWindows = false;
    Desktop desktop(setup);
    const auto connection = Platform::X11::Connection::open(desktop.displayName());
    const auto modifiers = Platform::X11::ModifierMap::read(*connection);
    const auto* info = xcb_get_setup(*connection);
    const auto before = ownBytes(desktop.serverPid());
    for (unsigned keycode = info->min_keycode; keycode <= info->max_keycode; ++keycode) {
        if (!modifiers.keycodes.test(keycode))
            xcb_grab_key(
                *connection, 1, connection->root(), XCB_MOD_MASK_ANY, static_cast<xcb_keycode_t>(keycode), XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    }
    Platform::X11::adopt(xcb_get_input_focus_reply(*connection, xcb_get_input_focus(*connection), nullptr));
    return ownBytes(desktop.serverPid()) - before;
}

std::string describe(const TimerDescriptors& timers) { return std::to_string(timers.armed) + " (of " + std::to_string(timers.open) + " open)"; }

std::string describe(const std::map<std::string, long>& wakeUps)
{
    long sum = 0;
    std::string threads;
    for (const auto& [thread, count] : wakeUps) {
        sum += count;
        threads += " " + thread + ": " + std::to_string(count);
    }
    return std::to_string(sum) + threads;
}

}  // namespace

RestFigures measureRest(const Options& options)
{
    Desktop desktop(options.setups.front());
    Crosshair crosshair(desktop, options.programPath);
    RestFigures figures;
    figures.residentBytes = residentBytes(crosshair.pid());
    figures.timers = timerDescriptors(crosshair.pid());
    figures.wakeUps = wakeUpsDuring(crosshair.pid(), options.idleLength);
    for (int i = 0; i < 10; ++i) {
        crosshair.show();
        crosshair.hide();
    }
    waitUntilAtRest(crosshair.pid());
    figures.residentBytesLater = residentBytes(crosshair.pid());
    figures.timersLater = timerDescriptors(crosshair.pid());
    return figures;
}

ServerMemoryFigures measureServerMemory(const Options& options)
{
    return {serverMemoryOfCrosshair(options, false), serverMemoryOfKeyGrabs(options), serverMemoryOfCrosshair(options, true)};
}

void report(Report& report, const Options& options, const RestFigures& rest, const ServerMemoryFigures& server)
{
    long wakeUps = 0;
    for (const auto& [thread, count] : rest.wakeUps)
        wakeUps += count;
    const auto mebibytes = [](long bytes) { return static_cast<double>(bytes) / mebibyte; };
    const auto size = options.memorySetup.screenName;
    report.table({
        {"at rest", "figure", "target"},
        {"wake-ups of all threads in " + std::to_string(options.idleLength.count()) + " s", describe(rest.wakeUps),
            againstTarget(static_cast<double>(wakeUps), 0, 0)},
        {"timers armed", describe(rest.timers), againstTarget(rest.timers.armed, 0, 0)},
        {"timers armed after ten crosshairs", describe(rest.timersLater), againstTarget(rest.timersLater.armed, 0, 0)},
        {"resident memory before any overlay, MiB", format(mebibytes(rest.residentBytes), 1), againstTarget(mebibytes(rest.residentBytes), 26, 0)},
        {"resident memory after ten crosshairs, MiB", format(mebibytes(rest.residentBytesLater), 1), "none"},
        {"X server's memory for the crosshair at " + size + ", MiB", format(mebibytes(server.bytesAlone), 2), "none"},
        {"as many grabbed keys without a crosshair, MiB", format(mebibytes(server.bytesOfKeys), 2), "none"},
        {"the difference: the overlay itself, MiB", format(mebibytes(server.bytesAlone - server.bytesOfKeys), 2),
            againstTarget(mebibytes(server.bytesAlone - server.bytesOfKeys), 1, 0)},
        {"the same with ten windows, whose contents the server then keeps, MiB", format(mebibytes(server.bytesWithWindows), 1), "none"},
    });
}

}  // namespace Benchmarks

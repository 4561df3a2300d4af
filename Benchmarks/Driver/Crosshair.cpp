#include "Crosshair.h"

#include <linux/input-event-codes.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "Support/WaitUntil.h"

namespace Benchmarks {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

}  // namespace

Crosshair::Crosshair(const Desktop& desktop, const std::string& programPath)
    : m_desktop(desktop), m_process(desktop.start({programPath})), m_keyboard(desktop.displayName()), m_lines(desktop.displayName())
{
    waitUntilAtRest(pid());
    if (!m_process.isRunning())
        throw failure("the program ended");
}

void Crosshair::show() { showMeasured(); }

void Crosshair::hide()
{
    pressShortcut();
    if (!TestSupport::waitUntil([this] { return m_lines.read(m_crossing) == m_beneath; }))
        throw failure("the crosshair did not go");
}

bool Crosshair::isRight() const { return areInverse(m_beneath, m_lines.read(m_crossing)); }

LinePieces Crosshair::look() const
{
    const auto* monitor = m_desktop.monitor();
    return monitor != nullptr ? readMonitor(*monitor, m_crossing, m_lines.screenWidth(), m_lines.screenHeight()) : m_lines.read(m_crossing);
}

// The screen is looked at every 0.1 ms: without a pause the looking itself would keep the
// server from its work.
Crosshair::Latency Crosshair::showMeasured()
{
    m_crossing = m_lines.pointer();
    m_beneath = m_lines.read(m_crossing);
    m_keyboard.press(KEY_LEFTMETA);
    m_keyboard.press(KEY_LEFTALT);

    Latency latency{.wasFirstChangeRight = true};
    const auto start = Clock::now();
    m_keyboard.press(KEY_X);
    while (true) {
        const auto now = look();
        const auto passed = Clock::now() - start;
        latency.milliseconds = std::chrono::duration<double, std::milli>(passed).count();
        if (areInverse(m_beneath, now))
            break;
        for (std::size_t line = 0; line < now.size(); ++line) {
            if (now[line] != m_beneath[line] && !areInverse(now[line], m_beneath[line]))
                latency.wasFirstChangeRight = false;
        }
        if (passed > 5s)
            throw failure("the crosshair did not come, or does not show the inverse of what lies beneath it");
        std::this_thread::sleep_for(100us);
    }
    for (const auto key : {KEY_X, KEY_LEFTALT, KEY_LEFTMETA})
        m_keyboard.release(static_cast<std::uint16_t>(key));
    return latency;
}

void Crosshair::pressShortcut() { m_keyboard.chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_X}); }

std::runtime_error Crosshair::failure(const std::string& what)
{
    std::ostringstream text;
    text << what << (m_process.isRunning() ? "" : " (the program is not running)") << "; standard error of all programs on that desktop:\n"
         << std::ifstream(m_desktop.standardErrorPath()).rdbuf();
    return std::runtime_error(text.str());
}

}  // namespace Benchmarks

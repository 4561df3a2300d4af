#include "Platform/X11/Overlays/X11OverlayWindows.h"

#include <algorithm>
#include <utility>

#include "Platform/X11/Overlays/X11OverlayWindow.h"

namespace Platform::X11 {

X11OverlayWindows::X11OverlayWindows(const Parts& parts)
    : m_parts(parts), m_contentsKeeper(parts.requests, parts.capture),
      m_stackGuard(parts.requests, parts.stackEvents, parts.watcher, parts.mainLoop, parts.layout,
          {
              .raise = [this] { raiseAll(); },
              .dismiss = [this] { dismissAll(); },
              .compositorChanged = [this] { renewFormats(); },
              .isOurs = [this](xcb_window_t window) { return isOurs(window); },
          }),
      m_focusKeeper(parts.requests, parts.focusEvents, parts.watcher, parts.mainLoop)
{
}

X11OverlayWindows::~X11OverlayWindows() = default;

std::unique_ptr<OverlayWindow> X11OverlayWindows::makeOverlayWindow(const OverlayStyle& style, OverlayWindowDelegate& delegate)
{
    if (m_windows.empty())
        m_contentsKeeper.start();
    return std::make_unique<X11OverlayWindow>(*this, style, delegate, ++m_lastWindowNumber);
}

void X11OverlayWindows::add(X11OverlayWindow& window)
{
    m_windows.push_back(&window);
    publishStack();
}

void X11OverlayWindows::remove(X11OverlayWindow& window)
{
    std::erase(m_windows, &window);
    publishStack();
    if (m_windows.empty())
        m_contentsKeeper.stop();
}

void X11OverlayWindows::orderFront(X11OverlayWindow& window)
{
    const bool wasNoneShown = m_shown.empty();
    if (wasNoneShown)
        m_focusKeeper.remember();
    std::erase(m_shown, &window);
    m_shown.push_back(&window);
    window.raise();
    window.setShown(true);
    m_parts.requests.flush();
    m_contentsKeeper.haveMapped();
    publishStack();
    if (!wasNoneShown)
        return;
    takeKeysSoon();
    m_stackGuard.watch();
}

// Grabbing all keys takes the server 2 to 5 ms, for which the first picture shall not wait.
void X11OverlayWindows::takeKeysSoon()
{
    constexpr std::chrono::nanoseconds tick{16'666'666};
    m_keysTimer = m_parts.mainLoop.repeatingTimer(tick, [this] { takeKeys(); });
}

void X11OverlayWindows::takeKeys()
{
    if (const auto timer = std::exchange(m_keysTimer, nullptr))
        grabKeys();
}

void X11OverlayWindows::grabKeys()
{
    m_parts.keys.grab([this](const KeyEvent& event) { keyDown(event); }, m_shown.front()->catcher());
}

void X11OverlayWindows::orderOut(X11OverlayWindow& window)
{
    if (std::erase(m_shown, &window) == 0)
        return;
    if (m_shown.empty())
        m_focusKeeper.keep();
    else if (m_keysTimer == nullptr)
        grabKeys();  // the focus may be lent by the window that goes
    window.setShown(false);
    m_parts.requests.flush();
    publishStack();
    if (!m_shown.empty())
        return;
    m_stackGuard.stopWatching();
    m_keysTimer.reset();
    m_parts.keys.release();
}

void X11OverlayWindows::raiseAll()
{
    for (auto* window : m_shown)
        window->raise();
    m_parts.requests.flush();
}

void X11OverlayWindows::dismissAll()
{
    const auto shown = m_shown;
    for (auto* window : shown)
        window->delegate().dismissRequested();
}

void X11OverlayWindows::renewFormats()
{
    for (auto* window : m_windows)
        window->renewFormat();
}

bool X11OverlayWindows::isOurs(xcb_window_t id) const
{
    return std::any_of(m_windows.begin(), m_windows.end(), [id](const auto* window) { return window->consistsOf(id); });
}

void X11OverlayWindows::keyDown(const KeyEvent& event)
{
    if (!m_shown.empty())
        m_shown.back()->delegate().keyDown(event);
}

void X11OverlayWindows::publishStack()
{
    std::vector<OverlayEntry> entries;
    for (const auto* window : m_windows) {
        if (std::find(m_shown.begin(), m_shown.end(), window) == m_shown.end())
            entries.push_back(window->stackEntry());
    }
    for (const auto* window : m_shown)
        entries.push_back(window->stackEntry());
    m_parts.stack.set(std::move(entries));
}

}  // namespace Platform::X11

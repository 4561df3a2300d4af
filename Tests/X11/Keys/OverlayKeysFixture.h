// The overlay's keys on a private server beside another client's window, which has the focus.
#pragma once

#include "Platform/X11/Keys/OverlayKeys.h"
#include "X11/Keys/KeysFixture.h"

namespace OverlayKeysTests {

using namespace Platform;

using Lines = std::vector<std::string>;

// Counts how often the main thread was woken.
class CountingWatcher final : public FileDescriptorWatcher {
public:
    explicit CountingWatcher(FileDescriptorWatcher& watcher) : m_watcher(watcher) { }

    Token watch(int fileDescriptor, std::function<void()> readable) override
    {
        return m_watcher.watch(fileDescriptor, [this, readable = std::move(readable)] {
            ++count;
            readable();
        });
    }

    int count = 0;

private:
    FileDescriptorWatcher& m_watcher;
};

inline std::string textOf(const KeyEvent& event)
{
    auto text = std::to_string(event.keyCode);
    if (event.modifiers != 0)
        text += " modifiers " + std::to_string(event.modifiers);
    return event.isRepeat ? text + " repeat" : text;
}

class OverlayKeysTest : public KeysFixture {
protected:
    OverlayKeysTest() { m_other.setFocus(m_window); }

    void grab(xcb_window_t focusWindow = XCB_WINDOW_NONE)
    {
        m_keys->grab([this](const KeyEvent& event) { m_events.push_back(textOf(event)); }, focusWindow);
    }

    // All that came until a key that works came through: F12.
    Lines takeEvents()
    {
        m_keyboard.tap(KEY_F12);
        EXPECT_TRUE(TestSupport::loopUntil([&] { return !m_events.empty() && m_events.back() == "111"; }));
        auto events = std::move(m_events);
        m_events.clear();
        std::erase(events, "111");
        return events;
    }

    // Keys that the program under the overlay gets from now on end here.
    void tapAfterOverlay(std::uint16_t key)
    {
        m_keyboard.tap(key);
        EXPECT_TRUE(TestSupport::loopUntil([&] { return !m_other.pressed().empty() && m_other.pressed().back() == key; }));
    }

    CountingWatcher m_watcher{m_mainLoop};
    std::unique_ptr<X11::OverlayKeys> m_keys = X11::OverlayKeys::open(m_server.displayName(), m_watcher, m_mainLoop);
    xcb_window_t m_window = m_other.mapWindow();
    Lines m_events;
};

}  // namespace OverlayKeysTests

// Keys as the keyboard sends them: before any grab, also while another client has the
// keyboard, without auto-repeats. The server leaves out those that happen while this very
// connection holds the keyboard; these come as ordinary key events then. Main thread only.
#pragma once

#include <cstdint>
#include <optional>

#include "Platform/X11/Connection.h"

namespace Platform::X11 {

struct RawKey {
    bool isPress = true;
    xcb_keycode_t keycode = 0;
    xcb_timestamp_t time = 0;     // that of the ordinary event of the same press
    std::uint16_t modifiers = 0;  // in effect before it, locks included; kept up to date while presses are wanted

    friend bool operator==(const RawKey&, const RawKey&) = default;
};

class RawKeys {
public:
    // XKB must have been started on the connection. Selects nothing yet.
    explicit RawKeys(Connection&);
    ~RawKeys();
    RawKeys(const RawKeys&) = delete;
    RawKeys& operator=(const RawKeys&) = delete;

    // True when the server can tell of raw keys that other clients grab (XInput 2.1).
    bool areSupported() const { return m_areSupported; }

    // Which of them the connection gets from now on. With no presses and no releases it
    // gets nothing at all. One round trip where presses begin, else none.
    void listen(bool presses, bool releases);

    // The key that the event tells of. Every event of the connection must pass here.
    std::optional<RawKey> keyOf(const xcb_generic_event_t&);

private:
    void selectModifierEvents(bool isOn);

    Connection& m_connection;
    bool m_areSupported = false;
    bool m_hasPresses = false;
    bool m_hasReleases = false;
    std::uint16_t m_modifiers = 0;
};

}  // namespace Platform::X11

// A keyboard whose keys a test presses: real key events of the X server (XTEST), with
// its auto-repeat, grabs and layouts. Keys are named by their evdev codes
// (linux/input-event-codes.h). Each operation returns when the server has done it.
// Keys still held are released at the end.
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <initializer_list>
#include <set>
#include <string>

namespace TestSupport {

class XTestKeyboard {
public:
    // Throws when no server with XTEST and XKB answers under that name.
    explicit XTestKeyboard(const std::string& displayName);
    ~XTestKeyboard();
    XTestKeyboard(const XTestKeyboard&) = delete;
    XTestKeyboard& operator=(const XTestKeyboard&) = delete;

    void press(std::uint16_t evdevCode);
    void release(std::uint16_t evdevCode);
    void tap(std::uint16_t evdevCode);
    // Presses in order, releases in the opposite order.
    void chord(std::initializer_list<std::uint16_t> evdevCodes);

    // The server repeats held keys 50 ms after the press and then every 10 ms.
    void repeatQuickly();
    // How often the server has repeated held keys so far, whoever got the events.
    int repeats();

    // The layout group, counted from 0, that stays on.
    void lockGroup(std::uint8_t group);
    // Sets exactly these modifiers (XCB_MOD_MASK_...) as locked.
    void lockModifiers(std::uint8_t modifiers);

    // The server's layouts, as setxkbmap takes them ("us,ru"; variants ",phonetic").
    void setLayout(const std::string& layouts, const std::string& variants = {}, const std::string& options = {});

private:
    void fakeKey(std::uint8_t type, std::uint16_t evdevCode);
    void waitForServer();

    const std::string m_displayName;
    xcb_connection_t* m_connection;
    xcb_window_t m_root = XCB_WINDOW_NONE;
    std::set<std::uint16_t> m_held;
    int m_repeats = 0;
};

}  // namespace TestSupport

// A server, its keyboard and a main loop: what the tests of this folder stand on.
#pragma once

#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include <QCoreApplication>
#include <memory>
#include <string>
#include <vector>

#include "Platform/KeyCodes.h"
#include "Platform/Qt/QtMainLoop.h"
#include "Platform/X11/Connection.h"
#include "Support/LoopUntil.h"
#include "Support/PrivateServer.h"
#include "Support/XTestKeyboard.h"

// Another program: hot keys, a keyboard grab, a window with the focus.
class OtherClient {
public:
    explicit OtherClient(const std::string& displayName) : m_connection(Platform::X11::Connection::open(displayName)) { }

    Platform::X11::Connection& connection() { return *m_connection; }

    // On the root without a window. False when it is taken.
    bool grabKey(std::uint16_t evdevCode, std::uint16_t modifiers, xcb_window_t window = XCB_WINDOW_NONE)
    {
        const auto cookie = xcb_grab_key_checked(*m_connection, 0, window != XCB_WINDOW_NONE ? window : m_connection->root(), modifiers,
            keycodeOf(evdevCode), XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        return Platform::X11::adopt(xcb_request_check(*m_connection, cookie)) == nullptr;
    }

    bool isTaken(std::uint16_t evdevCode, std::uint16_t modifiers, xcb_window_t window = XCB_WINDOW_NONE)
    {
        if (!grabKey(evdevCode, modifiers, window))
            return true;
        xcb_ungrab_key(*m_connection, keycodeOf(evdevCode), window != XCB_WINDOW_NONE ? window : m_connection->root(), modifiers);
        sync();
        return false;
    }
    bool isTakenOnFocus(std::uint16_t evdevCode) { return isTaken(evdevCode, 0, focus()); }

    // As a screen locker or an open menu does.
    bool grabKeyboard()
    {
        const auto cookie = xcb_grab_keyboard(*m_connection, 0, m_connection->root(), XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        const auto reply = Platform::X11::adopt(xcb_grab_keyboard_reply(*m_connection, cookie, nullptr));
        return reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
    }
    void ungrabKeyboard()
    {
        xcb_ungrab_keyboard(*m_connection, XCB_CURRENT_TIME);
        sync();
    }

    // A viewable window; it tells this client of its keys.
    xcb_window_t mapWindow(xcb_window_t parent = XCB_WINDOW_NONE)
    {
        const auto window = m_connection->newId();
        const std::uint32_t values[] = {1, XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE};
        xcb_create_window(*m_connection, XCB_COPY_FROM_PARENT, window, parent != XCB_WINDOW_NONE ? parent : m_connection->root(), 0, 0, 100, 100, 0,
            XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
        xcb_map_window(*m_connection, window);
        sync();
        return window;
    }
    void setFocus(xcb_window_t window)
    {
        xcb_set_input_focus(*m_connection, XCB_INPUT_FOCUS_NONE, window, XCB_CURRENT_TIME);
        sync();
    }
    xcb_window_t focus()
    {
        return Platform::X11::adopt(xcb_get_input_focus_reply(*m_connection, xcb_get_input_focus(*m_connection), nullptr))->focus;
    }

    // The evdev codes of the presses that came to this client so far.
    const std::vector<int>& pressed()
    {
        sync();
        while (const auto event = Platform::X11::Event(xcb_poll_for_event(*m_connection))) {
            if (Platform::X11::eventType(*event) == XCB_KEY_PRESS)
                m_pressed.push_back(reinterpret_cast<const xcb_key_press_event_t&>(*event).detail - 8);
        }
        return m_pressed;
    }

private:
    static xcb_keycode_t keycodeOf(std::uint16_t evdevCode) { return static_cast<xcb_keycode_t>(evdevCode + 8); }
    void sync() { focus(); }

    std::unique_ptr<Platform::X11::Connection> m_connection;
    std::vector<int> m_pressed;
};

class KeysFixture : public testing::Test {
protected:
    int m_argumentCount = 1;
    char m_programName[5] = "test";
    char* m_arguments[2] = {m_programName, nullptr};
    QCoreApplication m_application{m_argumentCount, m_arguments};
    TestSupport::DeferredDeletes m_deferredDeletes;
    Platform::QtMainLoop m_mainLoop;
    TestSupport::PrivateServer m_server;
    TestSupport::XTestKeyboard m_keyboard{m_server.displayName()};
    OtherClient m_other{m_server.displayName()};
};

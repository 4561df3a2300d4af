#include "Support/Desktop/ForeignHotKey.h"

#include <stdexcept>

namespace TestSupport {

using namespace Platform::X11;

namespace {

constexpr std::uint16_t capsLock = XCB_MOD_MASK_LOCK;
constexpr std::uint16_t numLock = XCB_MOD_MASK_2;
constexpr std::uint16_t lockStates[] = {0, capsLock, numLock, capsLock | numLock};

xcb_keycode_t keycodeOf(std::uint16_t evdevCode) { return static_cast<xcb_keycode_t>(evdevCode + 8); }

std::unique_ptr<Connection> connectTo(const std::string& displayName)
{
    auto connection = Connection::open(displayName);
    if (!connection)
        throw std::runtime_error("no X server at " + displayName);
    return connection;
}

// How many of the lock states could be grabbed.
int grab(const Connection& connection, std::uint16_t evdevCode, std::uint16_t modifiers)
{
    int granted = 0;
    for (const auto locks : lockStates) {
        const auto cookie =
            xcb_grab_key_checked(connection, 0, connection.root(), modifiers | locks, keycodeOf(evdevCode), XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        if (!adopt(xcb_request_check(connection, cookie)))
            ++granted;
    }
    return granted;
}

}  // namespace

ForeignHotKey::ForeignHotKey(const std::string& displayName, std::uint16_t evdevCode, std::uint16_t modifiers) : m_connection(connectTo(displayName))
{
    if (grab(*m_connection, evdevCode, modifiers) != std::ssize(lockStates))
        throw std::runtime_error("another program holds the hot key");
}

int ForeignHotKey::takePresses()
{
    adopt(xcb_get_input_focus_reply(*m_connection, xcb_get_input_focus(*m_connection), nullptr));
    int presses = 0;
    while (const auto event = adopt(xcb_poll_for_event(*m_connection)))
        presses += eventType(*event) == XCB_KEY_PRESS ? 1 : 0;
    return presses;
}

bool isHotKeyTaken(const std::string& displayName, std::uint16_t evdevCode, std::uint16_t modifiers)
{
    const auto connection = connectTo(displayName);
    xcb_grab_server(*connection);
    const bool isTaken = grab(*connection, evdevCode, modifiers) == 0;
    for (const auto locks : lockStates)
        xcb_ungrab_key(*connection, keycodeOf(evdevCode), connection->root(), modifiers | locks);
    xcb_ungrab_server(*connection);
    adopt(xcb_get_input_focus_reply(*connection, xcb_get_input_focus(*connection), nullptr));
    return isTaken;
}

}  // namespace TestSupport

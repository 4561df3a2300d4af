#include "Support/XTestKeyboard.h"

#include <xcb/xtest.h>

#include <stdexcept>
#include <vector>

#include "Platform/X11/Connection.h"
#include "Platform/X11/Keys/XkbProtocol.h"
#include "Support/Process.h"

namespace TestSupport {
namespace {

using Platform::X11::adopt;

bool startExtensions(xcb_connection_t* connection)
{
    const auto xtest = xcb_test_get_version(connection, 2, 2);
    const auto xkb = xcb_xkb_use_extension(connection, 1, 0);
    const auto xtestReply = adopt(xcb_test_get_version_reply(connection, xtest, nullptr));
    const auto xkbReply = adopt(xcb_xkb_use_extension_reply(connection, xkb, nullptr));
    return xtestReply && xkbReply && xkbReply->supported != 0;
}

constexpr std::uint16_t keycodeOffset = 8;  // X keycode = evdev code + 8
constexpr std::uint8_t allModifiers = 0xff;

}  // namespace

XTestKeyboard::XTestKeyboard(const std::string& displayName) : m_displayName(displayName), m_connection(xcb_connect(displayName.c_str(), nullptr))
{
    if (xcb_connection_has_error(m_connection) != 0 || !startExtensions(m_connection)) {
        xcb_disconnect(m_connection);
        throw std::runtime_error("no X server with XTEST and XKB at " + displayName);
    }
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
}

XTestKeyboard::~XTestKeyboard()
{
    for (const auto code : m_held)
        fakeKey(XCB_KEY_RELEASE, code);
    xcb_disconnect(m_connection);
}

void XTestKeyboard::press(std::uint16_t evdevCode)
{
    fakeKey(XCB_KEY_PRESS, evdevCode);
    m_held.insert(evdevCode);
}

void XTestKeyboard::release(std::uint16_t evdevCode)
{
    fakeKey(XCB_KEY_RELEASE, evdevCode);
    m_held.erase(evdevCode);
}

void XTestKeyboard::tap(std::uint16_t evdevCode)
{
    press(evdevCode);
    release(evdevCode);
}

void XTestKeyboard::chord(std::initializer_list<std::uint16_t> evdevCodes)
{
    for (const auto code : evdevCodes)
        press(code);
    for (const auto* code = evdevCodes.end(); code != evdevCodes.begin();)
        release(*--code);
}

void XTestKeyboard::lockGroup(std::uint8_t group)
{
    xcb_xkb_latch_lock_state(m_connection, XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1, group, 0, 0, 0);
    waitForServer();
}

void XTestKeyboard::lockModifiers(std::uint8_t modifiers)
{
    xcb_xkb_latch_lock_state(m_connection, XCB_XKB_ID_USE_CORE_KBD, allModifiers, modifiers, 0, 0, 0, 0, 0);
    waitForServer();
}

void XTestKeyboard::setLayout(const std::string& layouts, const std::string& variants, const std::string& options)
{
    std::vector<std::string> command = {"setxkbmap", "-display", m_displayName, "-layout", layouts, "-variant", variants, "-option", ""};
    if (!options.empty())
        command.insert(command.end(), {"-option", options});
    if (Process::start(command).waitForExit(std::chrono::seconds(10)) != 0)
        throw std::runtime_error("setxkbmap failed for " + layouts);
}

void XTestKeyboard::fakeKey(std::uint8_t type, std::uint16_t evdevCode)
{
    const auto keycode = static_cast<std::uint8_t>(evdevCode + keycodeOffset);
    xcb_test_fake_input(m_connection, type, keycode, XCB_CURRENT_TIME, m_root, 0, 0, 0);
    waitForServer();
}

void XTestKeyboard::waitForServer() { adopt(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr)); }

}  // namespace TestSupport

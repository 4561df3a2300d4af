#include "Support/XTestKeyboard.h"

#include <xcb/xinput.h>
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
    const auto xinput = xcb_input_xi_query_version(connection, 2, 2);
    const auto xtestReply = adopt(xcb_test_get_version_reply(connection, xtest, nullptr));
    const auto xkbReply = adopt(xcb_xkb_use_extension_reply(connection, xkb, nullptr));
    const auto xinputReply = adopt(xcb_input_xi_query_version_reply(connection, xinput, nullptr));
    return xtestReply && xkbReply && xkbReply->supported != 0 && xinputReply;
}

// The events of the keyboard device itself, which come whoever grabs its keys.
void selectDeviceEvents(xcb_connection_t* connection, xcb_window_t root)
{
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } selection{{.deviceid = XCB_INPUT_DEVICE_ALL, .mask_len = 1}, XCB_INPUT_XI_EVENT_MASK_KEY_PRESS};
    xcb_input_xi_select_events(connection, root, 1, &selection.head);
}

bool isRepeat(const xcb_generic_event_t& event)
{
    const auto& press = reinterpret_cast<const xcb_input_key_press_event_t&>(event);
    return event.response_type == XCB_GE_GENERIC && press.deviceid == press.sourceid && (press.flags & XCB_INPUT_KEY_EVENT_FLAGS_KEY_REPEAT) != 0;
}

void run(const std::vector<std::string>& command)
{
    if (Process::start(command).waitForExit(std::chrono::seconds(10)) != 0)
        throw std::runtime_error(command.front() + " failed");
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
    selectDeviceEvents(m_connection, m_root);
    waitForServer();
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

void XTestKeyboard::repeatQuickly() { run({"xset", "-display", m_displayName, "r", "rate", "50", "100"}); }

int XTestKeyboard::repeats()
{
    while (const auto event = adopt(xcb_poll_for_event(m_connection)))
        m_repeats += isRepeat(*event) ? 1 : 0;
    return m_repeats;
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
    run(command);
}

void XTestKeyboard::fakeKey(std::uint8_t type, std::uint16_t evdevCode)
{
    const auto keycode = static_cast<std::uint8_t>(evdevCode + keycodeOffset);
    xcb_test_fake_input(m_connection, type, keycode, XCB_CURRENT_TIME, m_root, 0, 0, 0);
    waitForServer();
}

void XTestKeyboard::waitForServer() { adopt(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr)); }

}  // namespace TestSupport

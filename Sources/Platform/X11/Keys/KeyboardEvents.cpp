#include "Platform/X11/Keys/KeyboardEvents.h"

#include <limits>

#include "Platform/KeyCodes.h"
#include "Platform/X11/Keys/XkbProtocol.h"

namespace Platform::X11 {
namespace {

constexpr xcb_keycode_t keycodeOffset = 8;

void selectMapEvents(Connection& connection)
{
    constexpr std::uint16_t events = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    constexpr std::uint16_t parts = XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP |
        XCB_XKB_MAP_PART_VIRTUAL_MODS | XCB_XKB_MAP_PART_VIRTUAL_MOD_MAP;
    xcb_xkb_select_events(connection, XCB_XKB_ID_USE_CORE_KBD, events, 0, events, parts, parts, nullptr);
}

}  // namespace

bool startKeyboardEvents(Connection& connection)
{
    if (!connection.has(xcb_xkb_id))
        return false;
    const auto use = xcb_xkb_use_extension(connection, XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION);
    const auto reply = adopt(xcb_xkb_use_extension_reply(connection, use, nullptr));
    if (!reply || reply->supported == 0)
        return false;
    constexpr std::uint32_t repeat = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    const auto flags = xcb_xkb_per_client_flags(connection, XCB_XKB_ID_USE_CORE_KBD, repeat, repeat, 0, 0, 0);
    selectMapEvents(connection);
    return adopt(xcb_xkb_per_client_flags_reply(connection, flags, nullptr)) != nullptr;
}

bool isKeyboardMapChange(const Connection& connection, const xcb_generic_event_t& event)
{
    if (eventType(event) == XCB_MAPPING_NOTIFY)
        return true;
    if (eventType(event) != connection.firstEvent(xcb_xkb_id))
        return false;
    return event.pad0 == XCB_XKB_NEW_KEYBOARD_NOTIFY || event.pad0 == XCB_XKB_MAP_NOTIFY;
}

std::optional<xcb_keycode_t> keycodeOfVirtualKey(std::int64_t virtualKeyCode)
{
    const auto code = evdevCode(virtualKeyCode);
    if (!code || *code > std::numeric_limits<xcb_keycode_t>::max() - keycodeOffset)
        return std::nullopt;
    return static_cast<xcb_keycode_t>(*code + keycodeOffset);
}

std::optional<std::uint16_t> virtualKeyOfKeycode(xcb_keycode_t keycode)
{
    if (keycode < keycodeOffset)
        return std::nullopt;
    return virtualKeyCode(static_cast<std::uint16_t>(keycode - keycodeOffset));
}

}  // namespace Platform::X11

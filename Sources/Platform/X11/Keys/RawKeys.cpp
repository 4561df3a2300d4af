#include "Platform/X11/Keys/RawKeys.h"

#include <xcb/xinput.h>

#include <cstring>

#include "Platform/X11/Keys/XkbProtocol.h"

namespace Platform::X11 {
namespace {

// Before 2.1, raw events stay away while another client has the keyboard.
constexpr std::uint16_t wantedMajor = 2;
constexpr std::uint16_t wantedMinor = 2;

bool startInputExtension(Connection& connection)
{
    if (!connection.has(xcb_input_id))
        return false;
    const auto query = xcb_input_xi_query_version(connection, wantedMajor, wantedMinor);
    const auto reply = adopt(xcb_input_xi_query_version_reply(connection, query, nullptr));
    return reply && (reply->major_version > 2 || (reply->major_version == 2 && reply->minor_version >= 1));
}

// With all devices, the same key would come from the device and from its master.
void selectRawEvents(Connection& connection, std::uint32_t events)
{
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } selection{{.deviceid = XCB_INPUT_DEVICE_ALL_MASTER, .mask_len = 1}, events};
    xcb_input_xi_select_events(connection, connection.root(), 1, &selection.head);
}

}  // namespace

RawKeys::RawKeys(Connection& connection) : m_connection(connection), m_areSupported(startInputExtension(connection)) { }

RawKeys::~RawKeys() { listen(false, false); }

void RawKeys::listen(bool presses, bool releases)
{
    if (!m_areSupported || (presses == m_hasPresses && releases == m_hasReleases))
        return;
    const bool hadPresses = m_hasPresses;
    m_hasPresses = presses;
    m_hasReleases = releases;
    std::uint32_t events = presses ? XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS : 0;
    if (releases)
        events |= XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE;
    selectRawEvents(m_connection, events);
    if (presses != hadPresses)
        selectModifierEvents(presses);
    m_connection.flush();
}

void RawKeys::selectModifierEvents(bool isOn)
{
    constexpr std::uint16_t detail = XCB_XKB_STATE_PART_MODIFIER_STATE;
    xcb_xkb_select_events_details_t details = {};
    details.affectState = detail;
    details.stateDetails = isOn ? detail : 0;
    xcb_xkb_select_events_aux(m_connection, XCB_XKB_ID_USE_CORE_KBD, XCB_XKB_EVENT_TYPE_STATE_NOTIFY, 0, 0, 0, 0, &details);
    if (!isOn)
        return;
    const auto query = xcb_xkb_get_state(m_connection, XCB_XKB_ID_USE_CORE_KBD);
    if (const auto state = adopt(xcb_xkb_get_state_reply(m_connection, query, nullptr)))
        m_modifiers = state->mods;
}

std::optional<RawKey> RawKeys::keyOf(const xcb_generic_event_t& event)
{
    if (eventType(event) == m_connection.firstEvent(xcb_xkb_id) && event.pad0 == XCB_XKB_STATE_NOTIFY) {
        m_modifiers = reinterpret_cast<const xcb_xkb_state_notify_event_t&>(event).mods;
        return std::nullopt;
    }
    if (!m_areSupported || eventType(event) != XCB_GE_GENERIC)
        return std::nullopt;
    const auto& raw = reinterpret_cast<const xcb_input_raw_key_press_event_t&>(event);
    if (raw.extension != m_connection.majorOpcode(xcb_input_id) || raw.detail > 255)
        return std::nullopt;
    if (raw.event_type != XCB_INPUT_RAW_KEY_PRESS && raw.event_type != XCB_INPUT_RAW_KEY_RELEASE)
        return std::nullopt;
    return RawKey{.isPress = raw.event_type == XCB_INPUT_RAW_KEY_PRESS,
        .keycode = static_cast<xcb_keycode_t>(raw.detail),
        .time = raw.time,
        .modifiers = m_modifiers};
}

}  // namespace Platform::X11

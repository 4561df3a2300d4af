#include "Platform/X11/Connection.h"

namespace Platform::X11 {
namespace {

xcb_screen_t* screenOf(xcb_connection_t* connection, int number)
{
    auto screen = xcb_setup_roots_iterator(xcb_get_setup(connection));
    while (number-- > 0 && screen.rem > 1)
        xcb_screen_next(&screen);
    return screen.data;
}

const xcb_visualtype_t* findVisual(const xcb_screen_t& screen, int depth, auto&& accepts)
{
    for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem > 0; xcb_depth_next(&depths)) {
        if (depths.data->depth != depth)
            continue;
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0; xcb_visualtype_next(&visuals)) {
            if (accepts(*visuals.data))
                return visuals.data;
        }
    }
    return nullptr;
}

bool isTrueColour888(const xcb_visualtype_t& visual)
{
    return visual._class == XCB_VISUAL_CLASS_TRUE_COLOR && visual.red_mask == 0xff0000 && visual.green_mask == 0xff00 && visual.blue_mask == 0xff;
}

}  // namespace

std::unique_ptr<Connection> Connection::open(const std::string& displayName)
{
    int screenNumber = 0;
    auto* connection = xcb_connect(displayName.empty() ? nullptr : displayName.c_str(), &screenNumber);
    if (xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        return nullptr;
    }
    return std::unique_ptr<Connection>(new Connection(connection, screenNumber));
}

Connection::Connection(xcb_connection_t* connection, int screenNumber)
    : m_connection(connection), m_screenNumber(screenNumber), m_screen(screenOf(connection, screenNumber))
{
}

Connection::~Connection() { xcb_disconnect(m_connection); }

bool Connection::has(xcb_extension_t& extension) const
{
    const auto* data = xcb_get_extension_data(m_connection, &extension);
    return data != nullptr && data->present != 0;
}

std::uint8_t Connection::firstEvent(xcb_extension_t& extension) const
{
    const auto* data = xcb_get_extension_data(m_connection, &extension);
    return data != nullptr ? data->first_event : 0;
}

std::uint8_t Connection::majorOpcode(xcb_extension_t& extension) const
{
    const auto* data = xcb_get_extension_data(m_connection, &extension);
    return data != nullptr ? data->major_opcode : 0;
}

xcb_atom_t Connection::atom(std::string_view name)
{
    const auto known = m_atoms.find(std::string(name));
    if (known != m_atoms.end())
        return known->second;
    const auto cookie = xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const auto reply = adopt(xcb_intern_atom_reply(m_connection, cookie, nullptr));
    if (!reply)
        return XCB_ATOM_NONE;
    m_atoms.emplace(name, reply->atom);
    return reply->atom;
}

bool Connection::hasUsualPixels() const
{
    const auto* visual = findVisual(
        *m_screen, m_screen->root_depth, [this](const xcb_visualtype_t& candidate) { return candidate.visual_id == m_screen->root_visual; });
    const bool isNativeOrder = xcb_get_setup(m_connection)->image_byte_order ==
        (__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? XCB_IMAGE_ORDER_LSB_FIRST : XCB_IMAGE_ORDER_MSB_FIRST);
    return visual != nullptr && isTrueColour888(*visual) && isNativeOrder;
}

xcb_visualid_t Connection::argbVisual() const
{
    const auto* visual = findVisual(*m_screen, 32, isTrueColour888);
    return visual != nullptr ? visual->visual_id : 0;
}

xcb_gcontext_t Connection::newScreenGraphics() const
{
    const auto graphics = newId();
    const std::uint32_t values[] = {XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS, 0};
    xcb_create_gc(m_connection, graphics, root(), XCB_GC_SUBWINDOW_MODE | XCB_GC_GRAPHICS_EXPOSURES, values);
    return graphics;
}

xcb_atom_t Connection::compositorSelection() { return atom("_NET_WM_CM_S" + std::to_string(m_screenNumber)); }

bool Connection::hasCompositor()
{
    const auto cookie = xcb_get_selection_owner(m_connection, compositorSelection());
    const auto owner = adopt(xcb_get_selection_owner_reply(m_connection, cookie, nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

}  // namespace Platform::X11

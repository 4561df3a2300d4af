#include "Platform/X11/Capture/StackModel.h"

#include <xcb/shape.h>

#include <algorithm>

#include "Platform/X11/Connection.h"

namespace Platform::X11 {
namespace {

// The three highest bits of an identifier are always zero.
constexpr std::uint32_t identifierBits = 0x1fffffff;

constexpr std::uint8_t sentEvent = 0x80;

template <typename T> const T& as(const xcb_generic_event_t& event) { return reinterpret_cast<const T&>(event); }

}  // namespace

bool StackModel::handle(const xcb_generic_event_t& event)
{
    // What a client sends is what it wants others to believe, not what the server did.
    const bool isSent = (event.response_type & sentEvent) != 0;
    const bool isChanged = !isSent && dispatch(event);
    m_generation += isChanged ? 1 : 0;
    return isChanged;
}

bool StackModel::dispatch(const xcb_generic_event_t& event)
{
    const auto type = eventType(event);
    if (type == m_identifiers.shapeNotify && type != 0)
        return reshaped(event);
    switch (type) {
    case XCB_CREATE_NOTIFY:
        return created(as<xcb_create_notify_event_t>(event));
    case XCB_DESTROY_NOTIFY:
        return remove(as<xcb_destroy_notify_event_t>(event).window);
    case XCB_MAP_NOTIFY:
        return mapped(as<xcb_map_notify_event_t>(event).window, true);
    case XCB_UNMAP_NOTIFY:
        return mapped(as<xcb_unmap_notify_event_t>(event).window, false);
    case XCB_REPARENT_NOTIFY:
        return reparented(as<xcb_reparent_notify_event_t>(event));
    case XCB_CONFIGURE_NOTIFY:
        return configured(as<xcb_configure_notify_event_t>(event));
    case XCB_GRAVITY_NOTIFY:
        return moved(as<xcb_gravity_notify_event_t>(event));
    case XCB_CIRCULATE_NOTIFY:
        return circulated(as<xcb_circulate_notify_event_t>(event));
    case XCB_PROPERTY_NOTIFY:
        return propertyChanged(as<xcb_property_notify_event_t>(event));
    default:
        return false;
    }
}

bool StackModel::isForeign(xcb_window_t id) const
{
    const bool isOwn = (id & ~m_identifiers.mask) == m_identifiers.ownBase;
    const bool isServers = (id & ~m_identifiers.mask & identifierBits) == 0;
    return !isOwn && !isServers && id != m_identifiers.root;
}

std::size_t StackModel::indexOf(xcb_window_t id) const
{
    for (std::size_t i = m_windows.size(); i-- > 0;) {
        if (m_windows[i].id == id)
            return i;
    }
    return m_windows.size();
}

ToplevelWindow* StackModel::find(xcb_window_t id)
{
    const auto index = indexOf(id);
    return index < m_windows.size() ? &m_windows[index] : nullptr;
}

ToplevelWindow* StackModel::findByClient(xcb_window_t client)
{
    const auto found = std::find_if(m_windows.begin(), m_windows.end(), [client](const ToplevelWindow& window) { return window.client == client; });
    return found != m_windows.end() ? &*found : nullptr;
}

void StackModel::doubtOpacity()
{
    for (auto& window : m_windows)
        window.needsOpacity = true;
}

void StackModel::clear()
{
    m_windows.clear();
    m_isBroken = false;
    ++m_generation;
}

ToplevelWindow* StackModel::add(xcb_window_t id)
{
    if (!isForeign(id))
        return nullptr;
    if (auto* known = find(id))
        return known;
    auto& window = m_windows.emplace_back();
    window.id = id;
    window.contents = ++m_lastContents;
    return &window;
}

void StackModel::setGeometry(ToplevelWindow& window, const DeviceRect& inner, int border)
{
    const DeviceRect frame = {inner.x, inner.y, inner.width + 2 * border, inner.height + 2 * border};
    if (frame.width != window.frame.width || frame.height != window.frame.height || border != window.border)
        window.contents = ++m_lastContents;
    window.frame = frame;
    window.border = border;
}

void StackModel::setMapped(ToplevelWindow& window, bool isMapped)
{
    window.isMapped = isMapped;
    window.contents = ++m_lastContents;
}

void StackModel::setRootSize(int width, int height)
{
    m_root = {0, 0, width, height};
    ++m_rootBackground;
}

bool StackModel::remove(xcb_window_t id)
{
    const auto index = indexOf(id);
    if (index == m_windows.size())
        return false;
    m_windows.erase(m_windows.begin() + static_cast<std::ptrdiff_t>(index));
    return true;
}

// A window without a sibling below it lies at the bottom.
bool StackModel::placeAbove(xcb_window_t id, xcb_window_t sibling)
{
    const auto from = indexOf(id);
    auto to = std::size_t{0};
    if (sibling != XCB_WINDOW_NONE && isForeign(sibling)) {
        to = indexOf(sibling);
        if (to == m_windows.size() || to == from) {
            m_isBroken = true;
            return true;
        }
        to += to < from ? 1 : 0;
    } else if (sibling != XCB_WINDOW_NONE) {
        // Only short-lived windows of ours lie at the bottom; the server's own lie on top.
        to = (sibling & ~m_identifiers.mask) == m_identifiers.ownBase ? 0 : m_windows.size() - 1;
    }
    const auto at = [this](std::size_t index) { return m_windows.begin() + static_cast<std::ptrdiff_t>(index); };
    if (from < to)
        std::rotate(at(from), at(from + 1), at(to + 1));
    else
        std::rotate(at(to), at(from), at(from + 1));
    return from != to;
}

bool StackModel::created(const xcb_create_notify_event_t& event)
{
    if (event.parent != m_identifiers.root)
        return false;
    auto* window = add(event.window);
    if (window == nullptr)
        return false;
    setGeometry(*window, {event.x, event.y, event.width, event.height}, event.border_width);
    return true;
}

bool StackModel::mapped(xcb_window_t id, bool isMapped)
{
    auto* window = find(id);
    if (window == nullptr || window->isMapped == isMapped)
        return false;
    setMapped(*window, isMapped);
    return true;
}

bool StackModel::reparented(const xcb_reparent_notify_event_t& event)
{
    if (event.parent != m_identifiers.root)
        return remove(event.window);
    remove(event.window);
    auto* window = add(event.window);
    if (window == nullptr)
        return false;
    // The event tells no size; the reader asks for it with the attributes.
    window->frame = {event.x, event.y, 0, 0};
    return true;
}

bool StackModel::configured(const xcb_configure_notify_event_t& event)
{
    if (event.window == m_identifiers.root) {
        setRootSize(event.width, event.height);
        return true;
    }
    auto* window = find(event.window);
    if (window == nullptr)
        return false;
    const auto frame = window->frame;
    const auto contents = window->contents;
    setGeometry(*window, {event.x, event.y, event.width, event.height}, event.border_width);
    const bool isReshaped = frame != window->frame || contents != window->contents;
    return placeAbove(event.window, event.above_sibling) || isReshaped;
}

bool StackModel::moved(const xcb_gravity_notify_event_t& event)
{
    auto* window = find(event.window);
    if (window == nullptr)
        return false;
    window->frame.x = event.x;
    window->frame.y = event.y;
    return true;
}

bool StackModel::circulated(const xcb_circulate_notify_event_t& event)
{
    if (find(event.window) == nullptr)
        return false;
    const bool isOnTop = event.place == XCB_PLACE_ON_TOP;
    const auto top = m_windows.back().id;
    if (isOnTop)
        return top != event.window && placeAbove(event.window, top);
    return placeAbove(event.window, XCB_WINDOW_NONE);
}

bool StackModel::propertyChanged(const xcb_property_notify_event_t& event)
{
    if (event.window == m_identifiers.root) {
        const auto& wallpapers = m_identifiers.wallpapers;
        const bool isWallpaper = std::find(wallpapers.begin(), wallpapers.end(), event.atom) != wallpapers.end();
        m_rootBackground += isWallpaper ? 1 : 0;
        return isWallpaper;
    }
    if (event.atom != m_identifiers.opacity)
        return false;
    auto* window = find(event.window);
    if (window == nullptr)
        window = findByClient(event.window);
    if (window == nullptr)
        return false;
    window->needsOpacity = true;
    return true;
}

bool StackModel::reshaped(const xcb_generic_event_t& event)
{
    const auto& shape = as<xcb_shape_notify_event_t>(event);
    auto* window = shape.shape_kind == XCB_SHAPE_SK_BOUNDING ? find(shape.affected_window) : nullptr;
    if (window == nullptr)
        return false;
    window->needsShape = true;
    return true;
}

}  // namespace Platform::X11

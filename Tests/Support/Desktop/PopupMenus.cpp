#include "Support/Desktop/PopupMenus.h"

#include <algorithm>
#include <stdexcept>

#include "Support/WaitUntil.h"

namespace TestSupport {

using namespace Platform::X11;

namespace {

constexpr int toMiddleOfEntry = 12;  // from the menu's edge

// Qt 6 calls its menus normal windows; no frame and no overlay says that.
bool saysThatItIsAMenu(Connection& connection, xcb_window_t window)
{
    const xcb_atom_t menus[] = {connection.atom("_NET_WM_WINDOW_TYPE_POPUP_MENU"), connection.atom("_NET_WM_WINDOW_TYPE_DROPDOWN_MENU"),
        connection.atom("_NET_WM_WINDOW_TYPE_MENU"), connection.atom("_NET_WM_WINDOW_TYPE_NORMAL")};
    const auto cookie = xcb_get_property(connection, 0, window, connection.atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM, 0, 8);
    const auto reply = adopt(xcb_get_property_reply(connection, cookie, nullptr));
    if (!reply)
        return false;
    const auto* types = static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get()));
    const auto* end = types + reply->value_len;
    return std::find_first_of(types, end, std::begin(menus), std::end(menus)) != end;
}

bool isShownAsItIs(Connection& connection, xcb_window_t window)
{
    const auto reply = adopt(xcb_get_window_attributes_reply(connection, xcb_get_window_attributes(connection, window), nullptr));
    return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE && reply->override_redirect != 0;
}

}  // namespace

std::vector<DeviceRect> openMenus(Connection& connection)
{
    std::vector<DeviceRect> menus;
    const auto tree = adopt(xcb_query_tree_reply(connection, xcb_query_tree(connection, connection.root()), nullptr));
    if (!tree)
        return menus;
    const auto* children = xcb_query_tree_children(tree.get());
    for (int i = xcb_query_tree_children_length(tree.get()); i-- > 0;) {
        if (!isShownAsItIs(connection, children[i]) || !saysThatItIsAMenu(connection, children[i]))
            continue;
        if (const auto geometry = adopt(xcb_get_geometry_reply(connection, xcb_get_geometry(connection, children[i]), nullptr)))
            menus.push_back({geometry->x, geometry->y, geometry->width, geometry->height});
    }
    return menus;
}

// Asks in such a way that no program can be refused the pointer meanwhile.
bool isPointerTaken(Connection& connection)
{
    xcb_grab_server(connection);
    const auto cookie =
        xcb_grab_pointer(connection, 1, connection.root(), 0, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, XCB_CURRENT_TIME);
    const auto reply = adopt(xcb_grab_pointer_reply(connection, cookie, nullptr));
    const bool isTaken = reply && reply->status == XCB_GRAB_STATUS_ALREADY_GRABBED;
    xcb_ungrab_pointer(connection, XCB_CURRENT_TIME);
    xcb_ungrab_server(connection);
    connection.flush();
    return isTaken;
}

DeviceRect waitForMenu(Desktop& desktop)
{
    auto& connection = desktop.connection();
    if (!waitUntil([&] { return !openMenus(connection).empty() && isPointerTaken(connection); }))
        throw std::runtime_error("no menu opens");
    desktop.screenshotAtRest();
    const auto menus = openMenus(connection);
    if (menus.size() != 1)
        throw std::runtime_error("there are " + std::to_string(menus.size()) + " menus");
    return menus.front();
}

bool waitForNoMenu(Desktop& desktop)
{
    auto& connection = desktop.connection();
    return waitUntil([&] { return openMenus(connection).empty() && !isPointerTaken(connection); });
}

void clickFirstEntry(Desktop& desktop, const DeviceRect& menu)
{
    desktop.pointer().moveTo(menu.x + menu.width / 2, menu.y + toMiddleOfEntry);
    desktop.pointer().click(1);
}

void clickLastEntry(Desktop& desktop, const DeviceRect& menu)
{
    desktop.pointer().moveTo(menu.x + menu.width / 2, menu.bottom() - toMiddleOfEntry);
    desktop.pointer().click(1);
}

}  // namespace TestSupport

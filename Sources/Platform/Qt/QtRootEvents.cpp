#include "Platform/Qt/QtRootEvents.h"

#include <xcb/xcb.h>

#include <QGuiApplication>

namespace Platform {

void ignoreOtherWindowsOnRoot()
{
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr)
        return;
    auto* connection = x11->connection();
    const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    for (auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection)); screens.rem > 0; xcb_screen_next(&screens))
        xcb_change_window_attributes(connection, screens.data->root, XCB_CW_EVENT_MASK, &mask);
    xcb_flush(connection);
}

}  // namespace Platform

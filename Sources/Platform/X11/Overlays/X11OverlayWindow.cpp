#include "Platform/X11/Overlays/X11OverlayWindow.h"

#include <algorithm>
#include <utility>

namespace Platform::X11 {
namespace {

// Takes the clicks and lets none of them reach the window beneath. Off the screen until it
// is placed; an outlined overlay, whose picture takes the clicks, leaves it there, as the
// window that has the focus where nobody else has.
xcb_window_t createCatcher(Connection& connection)
{
    const auto window = connection.newId();
    const xcb_create_window_value_list_t values{
        .override_redirect = 1,
        .do_not_propogate_mask = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION,
    };
    xcb_create_window_aux(connection, XCB_COPY_FROM_PARENT, window, connection.root(), -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
        XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT | XCB_CW_DONT_PROPAGATE, &values);
    return window;
}

void raiseWindow(Connection& connection, xcb_window_t window)
{
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(connection, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
}

// No overlay of a sensible size reaches further off the monitors. A window's sides end at
// 65,535 pixels, and its pixels take memory long before.
DeviceRect reachOf(const MonitorLayout& layout)
{
    constexpr int margin = 1024;
    const auto bounds = layout.bounds();
    return {bounds.x - margin, bounds.y - margin, bounds.width + 2 * margin, bounds.height + 2 * margin};
}

}  // namespace

X11OverlayWindow::X11OverlayWindow(X11OverlayWindows& owner, const OverlayStyle& style, OverlayWindowDelegate& delegate, std::int64_t windowNumber)
    : m_owner(owner), m_connection(owner.m_parts.requests), m_delegate(delegate), m_windowNumber(windowNumber), m_isOutlined(style.hasShadow),
      m_catcher(createCatcher(m_connection)), m_format(makeFormat())
{
    setFrame(style.frame);
    m_owner.add(*this);
}

X11OverlayWindow::~X11OverlayWindow()
{
    m_owner.orderOut(*this);
    m_pictures.clear();
    xcb_destroy_window(m_connection, m_catcher);
    freeColormap(m_format);
    m_connection.flush();
    m_owner.remove(*this);
}

PictureFormat X11OverlayWindow::makeFormat()
{
    const auto& screen = m_connection.screen();
    const auto argb = m_connection.argbVisual();
    if (argb == 0 || !m_connection.hasCompositor())
        return {false, screen.root_depth, screen.root_visual, screen.default_colormap, m_isOutlined};
    const auto colormap = m_connection.newId();
    xcb_create_colormap(m_connection, XCB_COLORMAP_ALLOC_NONE, colormap, m_connection.root(), argb);
    return {true, 32, argb, colormap, m_isOutlined};
}

void X11OverlayWindow::freeColormap(const PictureFormat& format)
{
    if (format.colormap != m_connection.screen().default_colormap)
        xcb_free_colormap(m_connection, format.colormap);
}

void X11OverlayWindow::setFrame(const Rect& frame)
{
    m_frame = frame;
    const auto layout = m_owner.m_parts.layout.get();
    m_deviceFrame = intersection(layout->deviceRectOfDesktop(frame), reachOf(*layout));
    if (m_isOutlined) {
        m_owner.m_parts.stack.place(static_cast<std::uint32_t>(m_windowNumber), m_deviceFrame);
        return;
    }
    if (m_deviceFrame.isEmpty()) {
        xcb_unmap_window(m_connection, m_catcher);
        m_connection.flush();
        return;
    }
    const xcb_configure_window_value_list_t values{.x = m_deviceFrame.x,
        .y = m_deviceFrame.y,
        .width = static_cast<std::uint32_t>(m_deviceFrame.width),
        .height = static_cast<std::uint32_t>(m_deviceFrame.height)};
    xcb_configure_window_aux(
        m_connection, m_catcher, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, &values);
    if (m_isShown)
        xcb_map_window(m_connection, m_catcher);
    m_connection.flush();
}

void X11OverlayWindow::present(std::span<const Picture> pictures)
{
    m_owner.m_stackGuard.ownWindowsMove();
    if (hasNewFormat())
        showInNewFormat(pictures);
    else
        show(pictures);
    m_connection.flush();
    m_owner.m_contentsKeeper.haveMapped();
    for (const auto& window : m_pictures)
        m_owner.m_parts.stack.movePicture(window->id(), m_isShown ? window->frame() : DeviceRect{});
    const bool isSeen = m_isShown && !m_format.isBlended;
    if (isSeen)
        m_owner.takeKeys();
}

void X11OverlayWindow::show(std::span<const Picture> pictures)
{
    const auto windowsBefore = m_pictures.size();
    // Whatever waits for the server comes before anything is seen: all changes at once.
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        const auto whole = deviceRectOf(pictures[i].rectangle);
        pictureWindow(i).take(pictures[i], whole, intersection(whole, m_deviceFrame));
    }
    // The first to go: what they uncover of the others is painted afterwards.
    for (std::size_t i = pictures.size(); i < m_pictures.size(); ++i)
        m_pictures[i]->showNothing();
    // All before the first is mapped: they may cover each other.
    const bool mustTell = m_isShown && m_owner.m_contentsKeeper.keepsLater();
    for (std::size_t i = 0; mustTell && i < pictures.size(); ++i)
        m_owner.m_contentsKeeper.willMap(m_pictures[i]->id(), m_pictures[i]->frame());
    for (std::size_t i = 0; i < pictures.size(); ++i)
        m_pictures[i]->show(m_isShown, isColour(pictures[i]) ? findColours(pictures.subspan(i + 1)) : std::span<const DeviceRect>());
    if (m_pictures.size() == windowsBefore)
        return;
    m_owner.raiseAll();
    m_owner.publishStack();
}

// Where they are, valid until the next call.
std::span<const DeviceRect> X11OverlayWindow::findColours(std::span<const Picture> pictures)
{
    m_colours.clear();
    for (const auto& picture : pictures) {
        if (isColour(picture))
            m_colours.push_back(intersection(deviceRectOf(picture.rectangle), m_deviceFrame));
    }
    return m_colours;
}

bool X11OverlayWindow::hasNewFormat()
{
    return std::exchange(m_isFormatOld, false) && m_format.isBlended != (m_connection.argbVisual() != 0 && m_connection.hasCompositor());
}

// In one step with the windows of the former format, so that the overlay never vanishes.
void X11OverlayWindow::showInNewFormat(std::span<const Picture> pictures)
{
    const auto formerFormat = std::exchange(m_format, makeFormat());
    auto formerPictures = std::exchange(m_pictures, {});
    show(pictures);
    formerPictures.clear();
    freeColormap(formerFormat);
}

PictureWindow& X11OverlayWindow::pictureWindow(std::size_t index)
{
    while (m_pictures.size() <= index)
        m_pictures.push_back(std::make_unique<PictureWindow>(m_connection, m_format));
    return *m_pictures[index];
}

DeviceRect X11OverlayWindow::deviceRectOf(const Rect& viewRect) const
{
    return m_owner.m_parts.layout.get()->deviceRectOfDesktop({m_frame.x + viewRect.x, m_frame.y + viewRect.y, viewRect.width, viewRect.height});
}

bool X11OverlayWindow::consistsOf(xcb_window_t window) const
{
    return window == m_catcher ||
        std::any_of(m_pictures.begin(), m_pictures.end(), [window](const auto& picture) { return picture->id() == window; });
}

OverlayEntry X11OverlayWindow::stackEntry() const
{
    OverlayEntry entry;
    entry.windowNumber = static_cast<std::uint32_t>(m_windowNumber);
    entry.catcher = m_catcher;
    for (const auto& picture : m_pictures)
        entry.pictures.push_back({picture->id(), m_isShown ? picture->frame() : DeviceRect{}});
    entry.isOutlined = m_isOutlined;
    entry.upcoming = m_isOutlined ? m_deviceFrame : DeviceRect{};
    return entry;
}

void X11OverlayWindow::setShown(bool isShown)
{
    m_isShown = isShown;
    if (isShown && (m_isOutlined || !m_deviceFrame.isEmpty()))
        xcb_map_window(m_connection, m_catcher);
    else
        xcb_unmap_window(m_connection, m_catcher);
    if (isShown) {
        for (const auto& picture : m_pictures)
            m_owner.m_contentsKeeper.willMap(picture->id(), picture->frame());
    }
    for (const auto& picture : m_pictures)
        picture->setShown(isShown);
}

void X11OverlayWindow::raise()
{
    for (const auto& picture : m_pictures)
        raiseWindow(m_connection, picture->id());
    raiseWindow(m_connection, m_catcher);
}

}  // namespace Platform::X11

#include "Platform/X11/Keys/FocusLoan.h"

#include <chrono>
#include <utility>

namespace Platform::X11 {
namespace {

// A window manager that moves the focus may leave it with no window for a moment. What it
// does next counts from a time before our request, which would make the server ignore it.
constexpr auto settlingTime = std::chrono::milliseconds(250);

bool saysThatNobodyHasFocus(const xcb_generic_event_t& event)
{
    if (eventType(event) != XCB_FOCUS_IN)
        return false;
    const auto& focusIn = reinterpret_cast<const xcb_focus_in_event_t&>(event);
    return focusIn.detail == XCB_NOTIFY_DETAIL_NONE && (focusIn.mode == XCB_NOTIFY_MODE_NORMAL || focusIn.mode == XCB_NOTIFY_MODE_WHILE_GRABBED);
}

}  // namespace

FocusLoan::FocusLoan(Connection& connection, MainLoop& mainLoop) : m_connection(connection), m_mainLoop(mainLoop) { }

FocusLoan::~FocusLoan() { end(); }

void FocusLoan::begin(xcb_window_t window)
{
    if (window == m_window)
        return;
    if (window == XCB_WINDOW_NONE)
        return end();
    if (m_window == XCB_WINDOW_NONE)
        selectFocusEvents(true);
    const auto former = std::exchange(m_window, window);
    if (m_isBorrowed && hasFocus(former))
        m_isBorrowed = setFocus(m_window);
    else
        takeIfNobodyHasIt();
}

void FocusLoan::end()
{
    m_timer.reset();
    if (m_window == XCB_WINDOW_NONE)
        return;
    const auto window = std::exchange(m_window, XCB_WINDOW_NONE);
    selectFocusEvents(false);
    if (std::exchange(m_isBorrowed, false) && hasFocus(window))
        setFocus(XCB_WINDOW_NONE);
    m_connection.flush();
}

void FocusLoan::handle(const xcb_generic_event_t& event)
{
    if (m_window == XCB_WINDOW_NONE || !saysThatNobodyHasFocus(event))
        return;
    m_timer = m_mainLoop.repeatingTimer(settlingTime, [this] {
        const auto once = std::move(m_timer);
        takeIfNobodyHasIt();
    });
}

void FocusLoan::takeIfNobodyHasIt()
{
    if (hasFocus(XCB_WINDOW_NONE))
        m_isBorrowed = setFocus(m_window);
}

bool FocusLoan::setFocus(xcb_window_t window) const
{
    const auto request = xcb_set_input_focus_checked(m_connection, XCB_INPUT_FOCUS_NONE, window, XCB_CURRENT_TIME);
    return adopt(xcb_request_check(m_connection, request)) == nullptr;
}

bool FocusLoan::hasFocus(xcb_window_t window) const
{
    const auto reply = adopt(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    return reply && reply->focus == window;
}

void FocusLoan::selectFocusEvents(bool isOn) const
{
    const std::uint32_t mask = isOn ? XCB_EVENT_MASK_FOCUS_CHANGE : XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(m_connection, m_connection.root(), XCB_CW_EVENT_MASK, &mask);
}

}  // namespace Platform::X11

#include "Platform/X11/Keys/KeyboardFocus.h"

#include <chrono>
#include <utility>

namespace Platform::X11 {
namespace {

// A window manager that moves the focus may leave it with no window for a moment. What it
// does next counts from a time before our request, which would make the server ignore it.
constexpr auto settlingTime = std::chrono::milliseconds(250);

// Nothing for focus events that a grab of the keyboard makes.
const xcb_focus_in_event_t* focusEvent(const xcb_generic_event_t& event)
{
    if (eventType(event) != XCB_FOCUS_IN && eventType(event) != XCB_FOCUS_OUT)
        return nullptr;
    const auto& focus = reinterpret_cast<const xcb_focus_in_event_t&>(event);
    return focus.mode == XCB_NOTIFY_MODE_NORMAL || focus.mode == XCB_NOTIFY_MODE_WHILE_GRABBED ? &focus : nullptr;
}

void selectFocusEvents(Connection& connection, xcb_window_t window, bool isOn)
{
    const std::uint32_t mask = isOn ? XCB_EVENT_MASK_FOCUS_CHANGE : XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(connection, window, XCB_CW_EVENT_MASK, &mask);
}

}  // namespace

KeyboardFocus::KeyboardFocus(Connection& connection, MainLoop& mainLoop, std::function<void()> moved)
    : m_connection(connection), m_mainLoop(mainLoop), m_moved(std::move(moved)), m_self(std::make_shared<KeyboardFocus*>(this))
{
}

KeyboardFocus::~KeyboardFocus()
{
    *m_self = nullptr;
    end();
}

void KeyboardFocus::begin(xcb_window_t lender)
{
    if (!std::exchange(m_isOn, true))
        selectFocusEvents(m_connection, m_connection.root(), true);
    const auto former = std::exchange(m_lender, lender);
    if (m_isBorrowed && former != lender && focus() == former)
        m_isBorrowed = setFocus(lender);
    else
        borrowIfNobodyHasIt();
}

void KeyboardFocus::end()
{
    m_timer.reset();
    if (!std::exchange(m_isOn, false))
        return;
    watch(XCB_WINDOW_NONE);
    selectFocusEvents(m_connection, m_connection.root(), false);
    if (std::exchange(m_isBorrowed, false) && focus() == m_lender)
        setFocus(XCB_WINDOW_NONE);
    m_lender = XCB_WINDOW_NONE;
    m_connection.flush();
}

xcb_window_t KeyboardFocus::toplevel()
{
    // The focus may move before its events are selected: look again.
    for (int attempt = 0; attempt < 3; ++attempt) {
        const auto before = focus();
        watch(toplevelOf(before));
        if (focus() == before)
            break;
    }
    return m_watched;
}

void KeyboardFocus::handle(const xcb_generic_event_t& event)
{
    const auto* focus = focusEvent(event);
    if (!m_isOn || focus == nullptr)
        return;
    postMoved();
    if (eventType(event) == XCB_FOCUS_IN && focus->detail == XCB_NOTIFY_DETAIL_NONE) {
        m_timer = m_mainLoop.repeatingTimer(settlingTime, [this] {
            const auto once = std::move(m_timer);
            borrowIfNobodyHasIt();
        });
    }
}

xcb_window_t KeyboardFocus::focus() const
{
    const auto reply = adopt(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    return reply ? reply->focus : xcb_window_t{XCB_INPUT_FOCUS_POINTER_ROOT};
}

bool KeyboardFocus::setFocus(xcb_window_t window) const
{
    const auto request = xcb_set_input_focus_checked(m_connection, XCB_INPUT_FOCUS_NONE, window, XCB_CURRENT_TIME);
    return adopt(xcb_request_check(m_connection, request)) == nullptr;
}

void KeyboardFocus::borrowIfNobodyHasIt()
{
    if (m_lender != XCB_WINDOW_NONE && focus() == XCB_WINDOW_NONE)
        m_isBorrowed = setFocus(m_lender);
}

xcb_window_t KeyboardFocus::toplevelOf(xcb_window_t window) const
{
    while (window > XCB_INPUT_FOCUS_POINTER_ROOT && window != m_connection.root()) {
        const auto tree = adopt(xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, window), nullptr));
        if (!tree)
            return XCB_WINDOW_NONE;
        if (tree->parent == tree->root)
            return window;
        window = tree->parent;
    }
    return XCB_WINDOW_NONE;
}

void KeyboardFocus::watch(xcb_window_t toplevel)
{
    const auto former = std::exchange(m_watched, toplevel);
    if (former == toplevel)
        return;
    if (former != XCB_WINDOW_NONE)
        selectFocusEvents(m_connection, former, false);
    if (toplevel != XCB_WINDOW_NONE)
        selectFocusEvents(m_connection, toplevel, true);
}

void KeyboardFocus::postMoved()
{
    if (std::exchange(m_isMovePending, true))
        return;
    m_mainLoop.post([self = m_self] {
        if (*self == nullptr)
            return;
        (*self)->m_isMovePending = false;
        if ((*self)->m_isOn)
            (*self)->m_moved();
    });
}

}  // namespace Platform::X11

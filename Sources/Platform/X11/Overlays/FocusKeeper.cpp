#include "Platform/X11/Overlays/FocusKeeper.h"

#include "Platform/X11/ActiveWindow.h"

namespace Platform::X11 {

FocusKeeper::FocusKeeper(Connection& requests, Connection& events, FileDescriptorWatcher& watcher, MainLoop& mainLoop)
    : m_requests(requests), m_events(events), m_mainLoop(mainLoop), m_activeWindowAtom(requests.atom("_NET_ACTIVE_WINDOW")),
      m_pump(events, watcher, mainLoop, [this](const xcb_generic_event_t& event) { handle(event); })
{
}

void FocusKeeper::remember()
{
    stopWatching();
    m_former = activeWindow(m_requests);
}

void FocusKeeper::keep()
{
    // Window managers were seen to answer the pointer's entering within 20 ms.
    constexpr auto moment = std::chrono::milliseconds(300);
    if (m_former == XCB_WINDOW_NONE)
        return;
    selectProperties(true);
    m_watchEnds = m_mainLoop.repeatingTimer(moment, [this] { stopWatching(); });
}

void FocusKeeper::handle(const xcb_generic_event_t& event)
{
    if (eventType(event) != XCB_PROPERTY_NOTIFY || !m_watchEnds)
        return;
    if (reinterpret_cast<const xcb_property_notify_event_t&>(event).atom != m_activeWindowAtom)
        return;
    const auto now = activeWindow(m_requests);
    if (now == XCB_WINDOW_NONE || now == m_former)
        return;
    stopWatching();
    activate(m_former);
}

void FocusKeeper::stopWatching()
{
    if (!m_watchEnds)
        return;
    m_watchEnds.reset();
    selectProperties(false);
}

void FocusKeeper::selectProperties(bool isWanted)
{
    const std::uint32_t mask = isWanted ? XCB_EVENT_MASK_PROPERTY_CHANGE : XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(m_events, m_events.root(), XCB_CW_EVENT_MASK, &mask);
    m_events.flush();
}

void FocusKeeper::activate(xcb_window_t window)
{
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = m_activeWindowAtom;
    constexpr std::uint32_t asPager = 2;  // a direct wish of the user's, which window managers grant
    message.data.data32[0] = asPager;
    message.data.data32[1] = XCB_CURRENT_TIME;
    constexpr auto mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT;
    xcb_send_event(m_requests, 0, m_requests.root(), mask, reinterpret_cast<const char*>(&message));
    m_requests.flush();
}

}  // namespace Platform::X11

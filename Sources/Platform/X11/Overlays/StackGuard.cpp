#include "Platform/X11/Overlays/StackGuard.h"

#include <xcb/xfixes.h>

#include <span>

namespace Platform::X11 {
namespace {

struct Foreign {
    xcb_window_t window;
    bool isOverrideRedirect;
    DeviceRect frame;
};

// The viewable windows above the lowest of ours that show pixels or take input, from the bottom up.
std::vector<Foreign> windowsAbove(Connection& connection, const std::function<bool(xcb_window_t)>& isOurs)
{
    const auto tree = adopt(xcb_query_tree_reply(connection, xcb_query_tree(connection, connection.root()), nullptr));
    if (!tree)
        return {};
    const std::span children(xcb_query_tree_children(tree.get()), static_cast<std::size_t>(xcb_query_tree_children_length(tree.get())));

    std::vector<xcb_window_t> candidates;
    bool isAboveOurs = false;
    for (const auto child : children) {
        if (isOurs(child))
            isAboveOurs = true;
        else if (isAboveOurs)
            candidates.push_back(child);
    }

    std::vector<std::pair<xcb_get_window_attributes_cookie_t, xcb_get_geometry_cookie_t>> cookies;
    cookies.reserve(candidates.size());
    for (const auto window : candidates)
        cookies.emplace_back(xcb_get_window_attributes(connection, window), xcb_get_geometry(connection, window));
    std::vector<Foreign> above;
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        const auto attributes = adopt(xcb_get_window_attributes_reply(connection, cookies[i].first, nullptr));
        const auto geometry = adopt(xcb_get_geometry_reply(connection, cookies[i].second, nullptr));
        if (!attributes || !geometry || attributes->map_state != XCB_MAP_STATE_VIEWABLE)
            continue;
        above.push_back({candidates[i], attributes->override_redirect != 0,
            {geometry->x, geometry->y, geometry->width + 2 * geometry->border_width, geometry->height + 2 * geometry->border_width}});
    }
    return above;
}

bool coversAMonitor(const DeviceRect& frame, const MonitorLayout& layout)
{
    for (const auto& monitor : layout.monitors()) {
        if (intersection(frame, monitor.frame) == monitor.frame)
            return true;
    }
    return false;
}

}  // namespace

StackGuard::StackGuard(Connection& requests, Connection& events, FileDescriptorWatcher& watcher, MainLoop& mainLoop,
    const SharedMonitorLayout& layout, Handlers handlers)
    : m_requests(requests), m_events(events), m_mainLoop(mainLoop), m_layout(layout), m_handlers(std::move(handlers)),
      m_compositorSelection(events.compositorSelection()), m_hasFixes(events.has(xcb_xfixes_id)), m_self(std::make_shared<StackGuard*>(this)),
      m_pump(events, watcher, mainLoop, [this](const xcb_generic_event_t& event) { handle(event); })
{
    if (m_hasFixes)
        xcb_discard_reply(events, xcb_xfixes_query_version(events, 5, 0).sequence);
    m_pump.collectAfterRoundTrips();
}

StackGuard::~StackGuard() { *m_self = nullptr; }

void StackGuard::watch()
{
    if (m_isWatching)
        return;
    m_isWatching = true;
    m_rivalries.clear();
    select(true);
    lookSoon();
}

void StackGuard::stopWatching()
{
    if (!m_isWatching)
        return;
    m_isWatching = false;
    select(false);
    m_pump.resume();
}

void StackGuard::ownWindowsMove()
{
    // A few ticks: whoever presents no more hears of foreign windows soon again.
    constexpr auto pause = std::chrono::milliseconds(50);
    if (m_isWatching)
        m_pump.deliverNowAndPause(pause);
}

void StackGuard::select(bool isWanted)
{
    const std::uint32_t mask = isWanted ? XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY : XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(m_events, m_events.root(), XCB_CW_EVENT_MASK, &mask);
    if (m_hasFixes) {
        constexpr std::uint32_t ownerChanges = XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
            XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE;
        xcb_xfixes_select_selection_input(m_events, m_events.root(), m_compositorSelection, isWanted ? ownerChanges : 0U);
    }
    m_events.flush();
}

void StackGuard::handle(const xcb_generic_event_t& event)
{
    if (m_hasFixes && eventType(event) == m_events.firstEvent(xcb_xfixes_id) + XCB_XFIXES_SELECTION_NOTIFY) {
        m_handlers.compositorChanged();
        return;
    }
    xcb_window_t window = XCB_WINDOW_NONE;
    switch (eventType(event)) {
    case XCB_MAP_NOTIFY:
        window = reinterpret_cast<const xcb_map_notify_event_t&>(event).window;
        break;
    case XCB_CONFIGURE_NOTIFY:
        window = reinterpret_cast<const xcb_configure_notify_event_t&>(event).window;
        break;
    case XCB_CIRCULATE_NOTIFY:
        window = reinterpret_cast<const xcb_circulate_notify_event_t&>(event).window;
        break;
    case XCB_REPARENT_NOTIFY:
        window = reinterpret_cast<const xcb_reparent_notify_event_t&>(event).window;
        break;
    default:
        return;
    }
    if (!m_handlers.isOurs(window))
        lookSoon();
}

// Once for a batch of events, and not from inside their delivery.
void StackGuard::lookSoon()
{
    if (!m_isWatching || m_willLook)
        return;
    m_willLook = true;
    m_mainLoop.post([self = m_self] {
        if (*self != nullptr)
            (*self)->look();
    });
}

void StackGuard::look()
{
    m_willLook = false;
    if (!m_isWatching)
        return;
    const auto layout = m_layout.get();
    bool mustRaise = false;
    for (const auto& foreign : windowsAbove(m_requests, m_handlers.isOurs)) {
        if (foreign.isOverrideRedirect && coversAMonitor(foreign.frame, *layout)) {
            m_handlers.dismiss();
            return;
        }
        mustRaise = mayRaiseAgainst(foreign.window) || mustRaise;
    }
    if (mustRaise)
        m_handlers.raise();
}

// A rival that raises itself whenever it is covered would make two programs raise for ever.
bool StackGuard::mayRaiseAgainst(xcb_window_t rival)
{
    constexpr int mostRaises = 5;
    constexpr auto period = std::chrono::seconds(1);
    const auto now = std::chrono::steady_clock::now();
    auto& rivalry = m_rivalries[rival];
    if (now - rivalry.since > period)
        rivalry = {now, 0};
    return ++rivalry.raises <= mostRaises;
}

}  // namespace Platform::X11

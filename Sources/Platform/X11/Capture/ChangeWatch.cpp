#include "Platform/X11/Capture/ChangeWatch.h"

#include <algorithm>
#include <utility>

#include "Platform/X11/Capture/WindowLook.h"

namespace Platform::X11 {
namespace {

// More are not worth telling apart.
constexpr std::size_t mostParts = 64;

}  // namespace

ChangeWatch::~ChangeWatch()
{
    stop();
    xcb_flush(m_server.connection());
}

void ChangeWatch::stop()
{
    for (const auto& [window, watched] : m_watched)
        xcb_damage_destroy(m_server.connection(), watched.damage);
    m_watched.clear();
    m_hasAllChanged = true;
}

void ChangeWatch::follow(const StackModel& model, const BelowOverlay& below)
{
    for (auto& [window, watched] : m_watched)
        watched.isWanted = false;
    Digest look;
    look.add({model.rootBackground()});
    look.add(model.root());
    for (const auto& window : model.windows().first(below.top)) {
        if (!window.hasPixels() || below.leavesOut(window.id))
            continue;
        look.add({lookOf(window)});
        watch(window);
    }
    unwatchOthers();
    if (std::exchange(m_look, look.value()) != m_look)
        m_hasAllChanged = true;
}

// Another window may have the number of one that went, and the news of a window whose
// stack was read anew may be lost: both have other contents.
void ChangeWatch::watch(const ToplevelWindow& window)
{
    auto& connection = m_server.connection();
    auto& watched = m_watched[window.id];
    watched.isWanted = true;
    if (std::exchange(watched.hasTold, false))
        xcb_damage_subtract(connection, watched.damage, XCB_NONE, XCB_NONE);
    if (watched.contents == window.contents)
        return;
    if (watched.damage != XCB_NONE)
        xcb_damage_destroy(connection, watched.damage);
    watched.contents = window.contents;
    watched.damage = connection.newId();
    xcb_damage_create(connection, watched.damage, window.id, XCB_DAMAGE_REPORT_LEVEL_BOUNDING_BOX);
    change(window.frame);
}

// Of a window that is gone the server has forgotten it already, and says so.
void ChangeWatch::unwatchOthers()
{
    std::erase_if(m_watched, [this](const auto& entry) {
        if (!entry.second.isWanted)
            xcb_damage_destroy(m_server.connection(), entry.second.damage);
        return !entry.second.isWanted;
    });
}

bool ChangeWatch::handle(const xcb_generic_event_t& event)
{
    if (!isPossible() || eventType(event) != m_server.connection().firstEvent(xcb_damage_id) + XCB_DAMAGE_NOTIFY)
        return false;
    const auto& notify = reinterpret_cast<const xcb_damage_notify_event_t&>(event);
    const auto watched = m_watched.find(notify.drawable);
    if (watched == m_watched.end() || watched->second.damage != notify.damage)
        return true;
    watched->second.hasTold = true;
    change({notify.geometry.x + notify.area.x, notify.geometry.y + notify.area.y, notify.area.width, notify.area.height});
    return true;
}

void ChangeWatch::change(const DeviceRect& part)
{
    if (m_changed.size() == mostParts)
        m_hasAllChanged = true;
    else
        m_changed.push_back(part);
}

bool ChangeWatch::touches(const DeviceRect& area) const
{
    return m_hasAllChanged ||
        std::any_of(m_changed.begin(), m_changed.end(), [&](const DeviceRect& part) { return !intersection(part, area).isEmpty(); });
}

void ChangeWatch::clear()
{
    m_hasAllChanged = false;
    m_changed.clear();
}

}  // namespace Platform::X11

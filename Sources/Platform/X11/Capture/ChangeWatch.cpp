#include "Platform/X11/Capture/ChangeWatch.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace Platform::X11 {
namespace {

// More are not worth telling apart.
constexpr std::size_t mostParts = 64;

// FNV-1a, a number at a time.
class Digest {
public:
    void add(std::initializer_list<std::uint64_t> numbers)
    {
        for (const auto number : numbers)
            m_value = (m_value ^ number) * 0x100000001b3;
    }
    void add(const DeviceRect& rect)
    {
        for (const int number : {rect.x, rect.y, rect.width, rect.height})
            add({static_cast<std::uint32_t>(number)});
    }
    std::uint64_t value() const { return m_value; }

private:
    std::uint64_t m_value = 0xcbf29ce484222325;
};

// All that a plan makes of a window.
void addLook(Digest& digest, const ToplevelWindow& window)
{
    digest.add({window.id, window.contents, window.visual, window.depth, window.opacity, std::uint64_t{window.isShaped},
        static_cast<std::uint32_t>(window.border), window.shape.size()});
    digest.add(window.frame);
    for (const auto& part : window.shape)
        digest.add(part);
}

}  // namespace

ChangeWatch::~ChangeWatch()
{
    for (const auto& [window, watched] : m_watched)
        xcb_damage_destroy(m_server.connection(), watched.damage);
    xcb_flush(m_server.connection());
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
        addLook(look, window);
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

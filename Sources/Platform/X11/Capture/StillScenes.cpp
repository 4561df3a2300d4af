#include "Platform/X11/Capture/StillScenes.h"

#include <algorithm>

namespace Platform::X11 {
bool StillScenes::handle(const xcb_generic_event_t& event)
{
    bool isHandled = false;
    for (const auto& rest : m_rests)
        isHandled = (rest.watch && rest.watch->handle(event)) || isHandled;
    return isHandled;
}

bool StillScenes::isStill(const Scene& scene, const StackModel& model, const BelowOverlay& below, std::span<const DeviceRect> areas, Time now)
{
    if (!m_server.hasDamage())
        return false;
    forgetOthers(scene);
    auto& rest = restOf(scene.windowNumber);
    if (rest.scene != scene) {
        rest.scene = scene;
        rest.begin = now;
        rest.watch.reset();
        rest.captured.reset();
    }
    if (now - rest.begin < shortestRest)
        return false;
    if (!rest.watch)
        rest.watch = std::make_unique<ChangeWatch>(m_server);
    rest.watch->follow(model, below);
    if (std::any_of(areas.begin(), areas.end(), [&](const DeviceRect& area) { return rest.watch->touches(area); }))
        rest.captured.reset();
    rest.watch->clear();
    return rest.captured && now - *rest.captured < longestStillness;
}

void StillScenes::captured(std::uint32_t windowNumber, bool isComplete, Time now)
{
    const auto rest = std::find_if(m_rests.begin(), m_rests.end(), [&](const Rest& known) { return known.scene.windowNumber == windowNumber; });
    if (rest != m_rests.end())
        rest->captured = isComplete ? std::optional(now) : std::nullopt;
}

// Of overlays that are gone.
void StillScenes::forgetOthers(const Scene& scene)
{
    std::erase_if(m_rests, [&](const Rest& rest) {
        const auto number = rest.scene.windowNumber;
        return number != scene.windowNumber && std::none_of(scene.overlays.begin(), scene.overlays.end(), [number](const OverlayEntry& overlay) {
            return overlay.windowNumber == number;
        });
    });
}

StillScenes::Rest& StillScenes::restOf(std::uint32_t windowNumber)
{
    auto found = std::find_if(m_rests.begin(), m_rests.end(), [&](const Rest& rest) { return rest.scene.windowNumber == windowNumber; });
    if (found == m_rests.end())
        found = m_rests.insert(m_rests.end(), Rest());
    return *found;
}

}  // namespace Platform::X11

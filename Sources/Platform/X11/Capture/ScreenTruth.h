// The picture under a compositor: the screen itself where no window of ours lies or lay
// a moment ago, so that shadows, effects and whatever else is no window are right;
// elsewhere what the screen last showed there. An outlined overlay covers more than is
// captured for it, and carries that along when it moves: what it is about to cover is read
// before it does.
#pragma once

#include <optional>

#include "Platform/X11/Capture/ChangeWatch.h"
#include "Platform/X11/Capture/CoverHistory.h"
#include "Platform/X11/Capture/StackHistory.h"
#include "Platform/X11/Capture/SurroundingsMemory.h"
#include "Platform/X11/Capture/TruthMemory.h"

namespace Platform::X11 {

class ScreenTruth {
public:
    using Time = CoverHistory::Time;

    // `compositorChanges` counts how often a compositor came or went. One that has just
    // come has painted nothing yet; for a moment the screen is not believed.
    void update(std::span<const OverlayEntry>, std::uint64_t compositorChanges, Time now);

    // Where windows have just changed the screen is not believed either.
    void followStack(const StackModel& model, std::span<const OverlayEntry> overlays, Time now) { m_stackHistory.update(model, overlays, now); }

    // The parts of `area` that the screen does not show as the capture wants them.
    void findCovered(const DeviceRect& area, const StackModel&, const BelowOverlay&, Region& covered) const;

    // The parts of the screen that the overlay, which is outlined, is about to cover and that
    // still show what lies beneath. They are to be learned.
    void findUpcoming(const OverlayEntry&, const DeviceRect& root, const StackModel&, const BelowOverlay&, std::vector<DeviceRect>& parts);
    void learn(const DeviceRect& part, std::span<const std::uint32_t> composed, std::span<const std::uint32_t> screen);

    void forgetAnswersFor(const ChangeWatch&);
    // True when recall() will say what `area` shows, once the parts that findUpcoming() told
    // are learned.
    bool isKnown(const DeviceRect& area, const Region& covered);
    void recall(const DeviceRect& area, std::span<std::uint32_t> picture) const { m_surroundings.recall(area, picture); }
    std::shared_ptr<const PixelRows> recalled(const DeviceRect& area) { return m_surroundings.recalled(area); }
    // Keeps for recall() what was merged for `area`.
    void keep(std::uint32_t windowNumber, const DeviceRect& area);

    // The picture of `area`, 0x00RRGGBB, valid until the next call. `screen` may be empty
    // when everything is covered.
    std::span<const std::uint32_t> merge(std::uint32_t windowNumber, const DeviceRect& area, const Region& covered,
        std::span<const std::uint32_t> composed, std::span<const std::uint32_t> screen);

private:
    CoverHistory m_history;
    StackHistory m_stackHistory;
    TruthMemory m_memory;
    SurroundingsMemory m_surroundings;
    Region m_covered;
    Region m_upcoming;
    DeviceRect m_place;  // covered, or told as upcoming; empty for an overlay off the screen or too large
    std::uint64_t m_compositorChanges = 0;
    std::optional<Time> m_distrustEnd;
    std::vector<std::uint32_t> m_composed;
    std::vector<std::uint32_t> m_picture;
};

}  // namespace Platform::X11

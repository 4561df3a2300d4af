// What the screen showed where a moving overlay lies and a little around it: read before
// the overlay covers it. A window on the screen, with room on all sides, that moves along
// only when the overlay leaves it; each pixel keeps its place in memory, so moving copies
// nothing. Also what was answered for the pixels of late, so that they need not be composed
// again while nothing beneath them changes.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "Platform/PixelRows.h"
#include "Platform/X11/Capture/Region.h"

namespace Platform::X11 {

class SurroundingsMemory {
public:
    // The memory is for that overlay from now on and has room for `area`.
    void follow(std::uint32_t windowNumber, const DeviceRect& area);
    bool follows(std::uint32_t windowNumber) const { return m_windowNumber == windowNumber && !m_window.isEmpty(); }

    // What the windows in `part` are together, and what the screen shows there: 0xXXRRGGBB.
    void learn(const DeviceRect& part, std::span<const std::uint32_t> composed, std::span<const std::uint32_t> screen);

    // Puts what the screen showed into the covered parts of `picture`, which shows `area`,
    // as long as the composed value is still the one of then; else the composed value.
    // `composed` is 0xXXRRGGBB, the colours put in are 0x00RRGGBB.
    void recover(const DeviceRect& area, const Region& covered, std::span<const std::uint32_t> composed, std::span<std::uint32_t> picture) const;

    // What was answered for `area`, 0x00RRGGBB, holds until it is dropped. What is learned
    // will be the answer, too. Recalled it is 0xffRRGGBB.
    void keep(const DeviceRect& area, std::span<const std::uint32_t> picture);
    bool isKept(const DeviceRect& area);
    void recall(const DeviceRect& area, std::span<std::uint32_t> picture) const;
    // The same where it lies, until something is learned or kept. Outlives this.
    std::shared_ptr<const PixelRows> recalled(const DeviceRect& area);
    void drop(const DeviceRect& area);
    void dropAll();

    void forget();

private:
    class Rows;

    static constexpr std::uint32_t unknown = 0xff000000;  // is no composed value

    void makeRoom(const DeviceRect& area);
    void moveTo(const DeviceRect& window);
    void growTo(const DeviceRect& window);
    template <typename Use> void forEachRun(const DeviceRect& part, Use&& use) const;

    std::uint32_t m_windowNumber = 0;
    DeviceRect m_window;
    // The screen's pixel (x, y) at (x mod width, y mod height).
    std::vector<std::uint32_t> m_composed;
    std::vector<std::uint32_t> m_screen;
    std::shared_ptr<std::vector<std::uint32_t>> m_answers;  // 0xffRRGGBB
    std::shared_ptr<Rows> m_rows;
    std::vector<std::uint8_t> m_isKept;  // 1 where the answer holds
    DeviceRect m_keptArea;               // as it does in all of this, which isKept() found last
    Region m_entered;
    Region m_unseen;
};

}  // namespace Platform::X11

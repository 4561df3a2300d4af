// What the screen really showed where an overlay now covers it. Shadows, effects and
// all that a compositor draws besides windows cannot be put together again; but as long
// as the windows' own pixels stay the same, so does what the compositor made of them.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "Platform/X11/Capture/Region.h"

namespace Platform::X11 {

class TruthMemory {
public:
    // Puts the last known truth into the covered parts of `picture`, which shows `area`;
    // where there is none, or the composed value is another one now, the composed value.
    // Pixels are 0x00RRGGBB in pictures of the overlay with that window number.
    void recover(std::uint32_t windowNumber, const DeviceRect& area, const Region& covered, std::span<const std::uint32_t> composed,
        std::span<std::uint32_t> picture);

    // A picture much larger than a strip or a loupe is not kept.
    void remember(
        std::uint32_t windowNumber, const DeviceRect& area, std::span<const std::uint32_t> composed, std::span<const std::uint32_t> picture);

    void forget() { m_records.clear(); }

    // Of 32 bits each, that it holds memory for.
    std::size_t valueCount() const;

private:
    struct Record {
        std::uint32_t windowNumber = 0;
        DeviceRect area;
        std::vector<std::uint32_t> composed;
        std::vector<std::uint32_t> truth;
        std::size_t size() const { return composed.capacity() + truth.capacity(); }
    };

    Record& makeRecord(std::uint32_t windowNumber, const DeviceRect& area, std::size_t values);

    std::vector<Record> m_records;  // the newest last
    Region m_unknown;
    std::vector<DeviceRect> m_parts;
};

}  // namespace Platform::X11

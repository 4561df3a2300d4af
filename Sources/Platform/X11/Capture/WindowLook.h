// A number for all that a plan makes of a window.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "Platform/X11/Capture/StackModel.h"

namespace Platform::X11 {

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

inline std::uint64_t lookOf(const ToplevelWindow& window)
{
    Digest digest;
    digest.add({window.id, window.contents, window.visual, window.depth, window.opacity, std::uint64_t{window.isShaped},
        static_cast<std::uint32_t>(window.border), window.shape.size()});
    digest.add(window.frame);
    for (const auto& part : window.shape)
        digest.add(part);
    return digest.value();
}

}  // namespace Platform::X11

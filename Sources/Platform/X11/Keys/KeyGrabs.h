// Passive grabs of keys, each of them answered by the server. A grab on the root comes
// before one on a window; grabs are in each other's way on the same window only.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "Platform/X11/Connection.h"

namespace Platform::X11 {

struct KeyCombination {
    xcb_keycode_t keycode = 0;
    std::uint16_t modifiers = 0;  // exactly these, or XCB_MOD_MASK_ANY

    friend bool operator==(const KeyCombination&, const KeyCombination&) = default;
};

// Those that the server refused because another client holds them. One round trip.
std::vector<KeyCombination> grabKeys(Connection&, xcb_window_t, std::span<const KeyCombination>);
void ungrabKeys(Connection&, xcb_window_t, std::span<const KeyCombination>);

// One for each subset of `locks` on top of the combination.
std::vector<KeyCombination> lockVariants(const KeyCombination&, std::uint16_t locks);

// Calls with each subset of the bits, the empty one included.
template <typename Function> void forEachSubset(std::uint16_t bits, Function&& function)
{
    std::uint16_t subset = 0;
    do {
        function(subset);
        subset = static_cast<std::uint16_t>((subset - bits) & bits);
    } while (subset != 0);
}

}  // namespace Platform::X11

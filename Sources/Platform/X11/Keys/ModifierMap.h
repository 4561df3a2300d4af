// Which of the eight modifier bits of X mean Alt, Super and NumLock here, and which keys
// are modifiers. Bits of X are as in XCB_MOD_MASK_...
#pragma once

#include <bitset>
#include <cstdint>
#include <optional>

#include "Platform/X11/Connection.h"

namespace Platform::X11 {

struct ModifierMap {
    // One round trip.
    static ModifierMap read(Connection&);

    // Nothing when a modifier has no bit on X (the function modifier, unknown bits).
    std::optional<std::uint16_t> modifiersOfCarbon(std::uint32_t carbonModifiers) const;
    // The other way round; locks and other modifiers are left out.
    std::uint32_t carbonOfModifiers(std::uint16_t modifiers) const;
    // ModifierFlag bits.
    std::uint32_t flagsOfModifiers(std::uint16_t modifiers) const;

    // CapsLock and NumLock.
    std::uint16_t locks() const { return static_cast<std::uint16_t>(XCB_MOD_MASK_LOCK | numLock); }

    std::uint16_t option = XCB_MOD_MASK_1;   // Alt; the usual bit where no key says otherwise
    std::uint16_t command = XCB_MOD_MASK_4;  // Super
    std::uint16_t numLock = 0;               // 0 where no key is NumLock
    std::uint16_t used = 0;                  // the bits that some key sets
    std::bitset<256> keycodes;               // the keys that set a bit

    friend bool operator==(const ModifierMap&, const ModifierMap&) = default;
};

}  // namespace Platform::X11

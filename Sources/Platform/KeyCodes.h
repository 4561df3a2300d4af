// Keys and modifiers as the seam speaks of them. A key code names a physical key by
// its place on an ANSI keyboard, in the numbering of the classic virtual key codes
// (A = 0, S = 1, ..., Escape = 53); changing the layout does not move it. The kernel's
// evdev codes name the same keys; an X keycode is the evdev code plus 8.
#pragma once

#include <cstdint>
#include <optional>

namespace Platform {

// The evdev code (linux/input-event-codes.h) of a virtual key code; nothing for a key
// that Linux has no code for (the function modifier, unknown codes).
std::optional<std::uint16_t> evdevCode(std::int64_t virtualKeyCode);

// The other way round. Nothing for a key that has no virtual key code.
std::optional<std::uint16_t> virtualKeyCode(std::uint16_t evdevCode);

// Modifier flags of events. Bits as in the stored modifier flags of shortcuts.
namespace ModifierFlag {
inline constexpr std::uint32_t capsLock = 1U << 16;
inline constexpr std::uint32_t shift = 1U << 17;
inline constexpr std::uint32_t control = 1U << 18;
inline constexpr std::uint32_t option = 1U << 19;   // Alt, Mod1
inline constexpr std::uint32_t command = 1U << 20;  // Super, Mod4
inline constexpr std::uint32_t numericPad = 1U << 21;
inline constexpr std::uint32_t function = 1U << 23;  // no X key sends it
}  // namespace ModifierFlag

// Modifier bits of hot keys (the classic event layer's).
namespace CarbonModifier {
inline constexpr std::uint32_t command = 1U << 8;
inline constexpr std::uint32_t shift = 1U << 9;
inline constexpr std::uint32_t option = 1U << 11;
inline constexpr std::uint32_t control = 1U << 12;
inline constexpr std::uint32_t function = 1U << 17;
}  // namespace CarbonModifier

struct KeyEvent {
    std::uint16_t keyCode = 0;    // virtual key code
    std::uint32_t modifiers = 0;  // ModifierFlag
    bool isRepeat = false;

    friend bool operator==(const KeyEvent&, const KeyEvent&) = default;
};

inline constexpr std::uint16_t escapeKeyCode = 53;

}  // namespace Platform

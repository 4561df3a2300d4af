// A key or mouse event of a window, as far as shortcuts care. The numbers are those of
// the event layer that the key codes come from.
#pragma once

#include <cstdint>

namespace KeyboardShortcuts {

struct Event {
    enum class Type : std::uint32_t {
        leftMouseUp = 2,
        rightMouseUp = 4,
        keyDown = 10,
        keyUp = 11,
        flagsChanged = 12,
    };

    Type type = Type::keyDown;
    std::uint16_t keyCode = 0;        // of key types: virtual key code
    std::uint32_t modifierFlags = 0;  // Platform::ModifierFlag
};

}  // namespace KeyboardShortcuts

// Which physical key a key symbol is on.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

struct xkb_keymap;

namespace Platform::Freedesktop {

struct KeyPosition {
    std::uint16_t virtualKeyCode = 0;
    bool isShifted = false;  // the key types the symbol with Shift

    friend bool operator==(const KeyPosition&, const KeyPosition&) = default;
};

// Takes a key symbol of libxkbcommon, letters in lower case.
using KeyOfSymbol = std::function<std::optional<KeyPosition>(std::uint32_t keysym)>;

// The keys of a keymap; it may be released afterwards. Its first layout that types a
// symbol decides, there a key that needs no Shift, so that "ru,us" has Latin letters too.
KeyOfSymbol keysOf(xkb_keymap&);

// The keys of the US layout on an ordinary keyboard.
KeyOfSymbol usKeys();

}  // namespace Platform::Freedesktop

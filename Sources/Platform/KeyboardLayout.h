// What the user's keyboard layout and desktop say about keys. Main thread only.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Platform {

class KeyboardLayout {
public:
    virtual ~KeyboardLayout() = default;

    // What the bare key types in the layout that can type ASCII: the active one if it
    // types a to z, else the first configured one that does (with "ru,us" the key X
    // gives "x"). A dead key gives its spacing character. UTF-8; nothing where there is
    // no such layout or the key types nothing. Not cached.
    virtual std::optional<std::string> displayText(std::uint16_t virtualKeyCode) = 0;
};

struct SymbolicHotKey {
    bool isEnabled = true;
    std::int64_t keyCode = 0;
    std::uint32_t carbonModifiers = 0;

    friend bool operator==(const SymbolicHotKey&, const SymbolicHotKey&) = default;
};

class ReservedShortcuts {
public:
    virtual ~ReservedShortcuts() = default;

    // The shortcuts that the running desktop keeps for itself, read afresh at every
    // call. Empty where no source can be asked; never waits long for one.
    virtual std::vector<SymbolicHotKey> copySymbolicHotKeys() = 0;
};

}  // namespace Platform

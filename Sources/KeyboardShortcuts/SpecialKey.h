// Keys that type nothing one could show: each has a text of its own, whatever the
// keyboard layout is.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "KeyboardShortcuts/Key.h"
#include "KeyboardShortcuts/Texts.h"

namespace KeyboardShortcuts {

struct SpecialKey {
    Key key;
    std::string_view symbol;             // UTF-8; empty where a localised text stands for it
    char32_t menuItemKeyEquivalent = 0;  // 0: cannot stand in a menu

    std::string presentableDescription(const Texts&) const;

    // The character by which menu items name this key: the control character that it
    // sends, or a function-key character of the private block that starts at U+F700
    // (upArrow F700, f1 F704, home F729, pageUp F72C, help F746). UTF-8.
    std::optional<std::string> appKitMenuItemKeyEquivalent() const;
};

// Nothing (null) for the other keys. The record lives as long as the program.
const SpecialKey* specialKey(Key);

}  // namespace KeyboardShortcuts

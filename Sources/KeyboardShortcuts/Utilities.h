// The two forms of a shortcut's modifiers, their symbols, and the case of key texts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace KeyboardShortcuts {

// Platform::ModifierFlag bits to Platform::CarbonModifier bits and back. Of both only
// shift, control, option, command and function exist here; every other bit is dropped.
std::uint32_t carbonModifiers(std::uint32_t modifierFlags);
std::uint32_t modifierFlags(std::int64_t carbonModifiers);

// The symbols of modifier flags in the order control, option, shift, command, function.
// UTF-8.
std::string symbolicRepresentation(std::uint32_t modifierFlags);

// The UTF-8 text of one character (code point).
std::string encoded(char32_t character);

// The one character (code point) that a UTF-8 text consists of; nothing for an empty, a
// longer or a malformed text.
std::optional<char32_t> singleCharacter(std::string_view utf8);

// One character with its title case ("a" gives "A", "ö" gives "Ö") and one with its lower
// case, whatever the user's locale is. A character stays one character: "ß" stays "ß",
// as on the key cap. UTF-8.
std::string capitalized(char32_t character);
std::string lowercased(char32_t character);

}  // namespace KeyboardShortcuts

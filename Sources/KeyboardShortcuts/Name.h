// The identifier of one action to which the user can assign a shortcut.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "KeyboardShortcuts/Shortcut.h"

namespace KeyboardShortcuts {

// The raw value alone decides whether two names are the same. Making one touches nothing;
// KeyboardShortcuts::declareName() makes one and applies its default to the store.
struct Name {
    std::string rawValue;
    std::optional<Shortcut> defaultShortcut;

    explicit Name(std::string raw, std::optional<Shortcut> initial = std::nullopt) : rawValue(std::move(raw)), defaultShortcut(initial) { }

    friend bool operator==(const Name& left, const Name& right) { return left.rawValue == right.rawValue; }
};

}  // namespace KeyboardShortcuts

template <> struct std::hash<KeyboardShortcuts::Name> {
    std::size_t operator()(const KeyboardShortcuts::Name& name) const noexcept { return std::hash<std::string>()(name.rawValue); }
};

// The texts of the shortcut subsystem, by their keys. This is the English table; a
// translation overrides text() and falls back to it.
#pragma once

#include <string>
#include <string_view>

namespace KeyboardShortcuts {

class Texts {
public:
    virtual ~Texts() = default;

    // UTF-8. A key without a text gives the key itself, so that the gap shows.
    virtual std::string text(std::string_view key) const;
};

}  // namespace KeyboardShortcuts

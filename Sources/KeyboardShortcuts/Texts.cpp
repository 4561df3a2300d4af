#include "KeyboardShortcuts/Texts.h"

#include <array>
#include <utility>

namespace KeyboardShortcuts {
namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 1> english = {{
    {"space_key", "Space"},
}};

}  // namespace

std::string Texts::text(std::string_view key) const
{
    for (const auto& [name, value] : english) {
        if (name == key)
            return std::string(value);
    }
    return std::string(key);
}

}  // namespace KeyboardShortcuts

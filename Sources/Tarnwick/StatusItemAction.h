// What a plain click on the status item does.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "Tarnwick/PersistentSetting.h"

namespace Tarnwick {

enum class StatusItemAction { menu, crosshair, loupe };

inline constexpr std::array allStatusItemActions = {StatusItemAction::menu, StatusItemAction::crosshair, StatusItemAction::loupe};

// The text it is stored as.
constexpr std::string_view rawValue(StatusItemAction action)
{
    switch (action) {
    case StatusItemAction::menu:
        return "menu";
    case StatusItemAction::crosshair:
        return "crosshair";
    case StatusItemAction::loupe:
        return "loupe";
    }
    return {};
}

constexpr std::optional<StatusItemAction> statusItemActionOf(std::string_view rawText)
{
    for (const auto action : allStatusItemActions) {
        if (rawValue(action) == rawText)
            return action;
    }
    return std::nullopt;
}

template <> struct SettingStorage<StatusItemAction> {
    static std::optional<StatusItemAction> read(Platform::UserDefaults& defaults, std::string_view key)
    {
        const auto rawText = defaults.stringValue(key);
        return rawText ? statusItemActionOf(*rawText) : std::nullopt;
    }
    static Platform::DefaultsValue stored(StatusItemAction action) { return std::string(rawValue(action)); }
};

}  // namespace Tarnwick

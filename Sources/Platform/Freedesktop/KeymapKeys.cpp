#include "Platform/Freedesktop/KeymapKeys.h"

#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <array>
#include <memory>
#include <unordered_map>

#include "Platform/KeyCodes.h"

namespace Platform::Freedesktop {
namespace {

constexpr xkb_keycode_t xKeycodeOffset = 8;
constexpr xkb_level_index_t shiftLevel = 1;

using Positions = std::unordered_map<std::uint32_t, KeyPosition>;

// Keypad digits are on the same level, but NumLock is their modifier.
bool needsShift(xkb_keymap* keymap, xkb_keycode_t key, xkb_layout_index_t layout, xkb_level_index_t level)
{
    const auto shift = xkb_mod_mask_t{1} << xkb_keymap_mod_get_index(keymap, XKB_MOD_NAME_SHIFT);
    const auto lock = xkb_mod_mask_t{1} << xkb_keymap_mod_get_index(keymap, XKB_MOD_NAME_CAPS);
    std::array<xkb_mod_mask_t, 16> masks{};
    const auto count = xkb_keymap_key_get_mods_for_level(keymap, key, layout, level, masks.data(), masks.size());
    return level != 0 && std::all_of(masks.begin(), masks.begin() + static_cast<std::ptrdiff_t>(count), [&](xkb_mod_mask_t mask) {
        return mask == lock || (mask & shift) != 0;
    });
}

void addKeys(Positions& positions, xkb_keymap* keymap, xkb_layout_index_t layout, xkb_level_index_t level)
{
    for (auto key = xkb_keymap_min_keycode(keymap); key <= xkb_keymap_max_keycode(keymap); ++key) {
        if (key < xKeycodeOffset || layout >= xkb_keymap_num_layouts_for_key(keymap, key))
            continue;
        const auto code = virtualKeyCode(static_cast<std::uint16_t>(key - xKeycodeOffset));
        const xkb_keysym_t* symbols = nullptr;
        const int count = code ? xkb_keymap_key_get_syms_by_level(keymap, key, layout, level, &symbols) : 0;
        if (count == 1)
            positions.emplace(xkb_keysym_to_lower(symbols[0]), KeyPosition{*code, needsShift(keymap, key, layout, level)});
    }
}

}  // namespace

KeyOfSymbol keysOf(xkb_keymap& keymap)
{
    const auto positions = std::make_shared<Positions>();
    for (xkb_layout_index_t layout = 0; layout < xkb_keymap_num_layouts(&keymap); ++layout) {
        addKeys(*positions, &keymap, layout, 0);
        addKeys(*positions, &keymap, layout, shiftLevel);
    }
    return [positions](std::uint32_t keysym) -> std::optional<KeyPosition> {
        const auto found = positions->find(keysym);
        return found != positions->end() ? std::optional(found->second) : std::nullopt;
    };
}

KeyOfSymbol usKeys()
{
    const std::unique_ptr<xkb_context, decltype(&xkb_context_unref)> context(xkb_context_new(XKB_CONTEXT_NO_ENVIRONMENT_NAMES), xkb_context_unref);
    const xkb_rule_names names = {.rules = "evdev", .model = "pc105", .layout = "us", .variant = "", .options = ""};
    xkb_keymap* compiled = context ? xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS) : nullptr;
    const std::unique_ptr<xkb_keymap, decltype(&xkb_keymap_unref)> keymap(compiled, xkb_keymap_unref);
    if (!keymap)
        return [](std::uint32_t) { return std::nullopt; };
    return keysOf(*keymap);
}

}  // namespace Platform::Freedesktop

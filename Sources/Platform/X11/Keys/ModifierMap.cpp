#include "Platform/X11/Keys/ModifierMap.h"

#include <xkbcommon/xkbcommon-keysyms.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <span>

#include "Platform/KeyCodes.h"

namespace Platform::X11 {
namespace {

constexpr std::size_t modifierCount = 8;
constexpr std::size_t firstFreeModifier = 3;  // after Shift, Lock and Control, whose meaning is fixed

class ModifierKeys {
public:
    explicit ModifierKeys(Connection& connection) : m_firstKeycode(xcb_get_setup(connection)->min_keycode)
    {
        const auto count = static_cast<std::uint8_t>(xcb_get_setup(connection)->max_keycode - m_firstKeycode + 1);
        const auto modifiers = xcb_get_modifier_mapping(connection);
        const auto keysyms = xcb_get_keyboard_mapping(connection, m_firstKeycode, count);
        m_modifiers = adopt(xcb_get_modifier_mapping_reply(connection, modifiers, nullptr));
        m_keysyms = adopt(xcb_get_keyboard_mapping_reply(connection, keysyms, nullptr));
    }

    bool isComplete() const { return m_modifiers && m_keysyms; }

    // Empty entries are keycode 0.
    std::span<const xcb_keycode_t> keycodesOf(std::size_t modifier) const
    {
        const auto width = static_cast<std::size_t>(m_modifiers->keycodes_per_modifier);
        return std::span(xcb_get_modifier_mapping_keycodes(m_modifiers.get()), width * modifierCount).subspan(modifier * width, width);
    }

    // The first free modifier that some key with one of the symbols sets, else 0.
    std::uint16_t modifierOf(std::initializer_list<xcb_keysym_t> symbols) const
    {
        for (auto modifier = firstFreeModifier; modifier < modifierCount; ++modifier) {
            for (const auto keycode : keycodesOf(modifier)) {
                if (keycode != 0 && hasAny(keycode, symbols))
                    return static_cast<std::uint16_t>(1U << modifier);
            }
        }
        return 0;
    }

private:
    bool hasAny(xcb_keycode_t keycode, std::initializer_list<xcb_keysym_t> symbols) const
    {
        const auto width = static_cast<std::size_t>(m_keysyms->keysyms_per_keycode);
        const auto all = std::span(
            xcb_get_keyboard_mapping_keysyms(m_keysyms.get()), static_cast<std::size_t>(xcb_get_keyboard_mapping_keysyms_length(m_keysyms.get())));
        const auto offset = static_cast<std::size_t>(keycode - m_firstKeycode) * width;
        if (keycode < m_firstKeycode || offset + width > all.size())
            return false;
        const auto own = all.subspan(offset, width);
        return std::find_first_of(own.begin(), own.end(), symbols.begin(), symbols.end()) != own.end();
    }

    const xcb_keycode_t m_firstKeycode;
    Reply<xcb_get_modifier_mapping_reply_t> m_modifiers;
    Reply<xcb_get_keyboard_mapping_reply_t> m_keysyms;
};

struct Meaning {
    std::uint16_t modifiers;
    std::uint32_t carbon;
    std::uint32_t flag;
};

std::array<Meaning, 4> meanings(const ModifierMap& map)
{
    return {{
        {XCB_MOD_MASK_SHIFT, CarbonModifier::shift, ModifierFlag::shift},
        {XCB_MOD_MASK_CONTROL, CarbonModifier::control, ModifierFlag::control},
        {map.option, CarbonModifier::option, ModifierFlag::option},
        {map.command, CarbonModifier::command, ModifierFlag::command},
    }};
}

}  // namespace

ModifierMap ModifierMap::read(Connection& connection)
{
    ModifierMap map;
    const ModifierKeys keys(connection);
    if (!keys.isComplete())
        return map;
    for (std::size_t modifier = 0; modifier < modifierCount; ++modifier) {
        for (const auto keycode : keys.keycodesOf(modifier)) {
            if (keycode == 0)
                continue;
            map.keycodes.set(keycode);
            map.used = static_cast<std::uint16_t>(map.used | 1U << modifier);
        }
    }
    if (const auto super = keys.modifierOf({XKB_KEY_Super_L, XKB_KEY_Super_R}))
        map.command = super;
    if (const auto alt = keys.modifierOf({XKB_KEY_Alt_L, XKB_KEY_Alt_R}))
        map.option = alt;
    map.numLock = keys.modifierOf({XKB_KEY_Num_Lock});
    return map;
}

std::optional<std::uint16_t> ModifierMap::modifiersOfCarbon(std::uint32_t carbonModifiers) const
{
    std::uint16_t modifiers = 0;
    for (const auto& meaning : meanings(*this)) {
        if ((carbonModifiers & meaning.carbon) != 0)
            modifiers = static_cast<std::uint16_t>(modifiers | meaning.modifiers);
        carbonModifiers &= ~meaning.carbon;
    }
    if (carbonModifiers != 0)
        return std::nullopt;
    return modifiers;
}

std::uint32_t ModifierMap::carbonOfModifiers(std::uint16_t modifiers) const
{
    std::uint32_t carbon = 0;
    for (const auto& meaning : meanings(*this)) {
        if ((modifiers & meaning.modifiers) != 0)
            carbon |= meaning.carbon;
    }
    return carbon;
}

std::uint32_t ModifierMap::flagsOfModifiers(std::uint16_t modifiers) const
{
    std::uint32_t flags = (modifiers & XCB_MOD_MASK_LOCK) != 0 ? ModifierFlag::capsLock : 0;
    for (const auto& meaning : meanings(*this)) {
        if ((modifiers & meaning.modifiers) != 0)
            flags |= meaning.flag;
    }
    return flags;
}

}  // namespace Platform::X11

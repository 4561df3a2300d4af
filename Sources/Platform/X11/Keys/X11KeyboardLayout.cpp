#include "Platform/X11/Keys/X11KeyboardLayout.h"

#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <array>
#include <bitset>
#include <span>
#include <utility>

#include "Platform/X11/Connection.h"
#include "Platform/X11/Keys/KeyboardEvents.h"

namespace Platform::X11 {
namespace {

struct KeymapDeleter {
    void operator()(xkb_keymap* keymap) const { xkb_keymap_unref(keymap); }
};
using Keymap = std::unique_ptr<xkb_keymap, KeymapDeleter>;

struct StateDeleter {
    void operator()(xkb_state* state) const { xkb_state_unref(state); }
};
using State = std::unique_ptr<xkb_state, StateDeleter>;

struct SpacingCharacter {
    xkb_keysym_t deadKey;
    std::uint32_t character;
};

// The key with nothing to put its accent on.
constexpr std::array spacingCharacters = {
    SpacingCharacter{XKB_KEY_dead_grave, U'`'},
    SpacingCharacter{XKB_KEY_dead_acute, U'\u00b4'},
    SpacingCharacter{XKB_KEY_dead_circumflex, U'^'},
    SpacingCharacter{XKB_KEY_dead_tilde, U'~'},
    SpacingCharacter{XKB_KEY_dead_macron, U'\u00af'},
    SpacingCharacter{XKB_KEY_dead_breve, U'\u02d8'},
    SpacingCharacter{XKB_KEY_dead_abovedot, U'\u02d9'},
    SpacingCharacter{XKB_KEY_dead_diaeresis, U'\u00a8'},
    SpacingCharacter{XKB_KEY_dead_abovering, U'\u02da'},
    SpacingCharacter{XKB_KEY_dead_doubleacute, U'\u02dd'},
    SpacingCharacter{XKB_KEY_dead_caron, U'\u02c7'},
    SpacingCharacter{XKB_KEY_dead_cedilla, U'\u00b8'},
    SpacingCharacter{XKB_KEY_dead_ogonek, U'\u02db'},
    SpacingCharacter{XKB_KEY_dead_iota, U'\u037a'},
    SpacingCharacter{XKB_KEY_dead_stroke, U'/'},
    SpacingCharacter{XKB_KEY_dead_belowdot, U'.'},
    SpacingCharacter{XKB_KEY_dead_hook, U'?'},
};

// 0 when the symbol types nothing that can be shown.
std::uint32_t characterOf(xkb_keysym_t symbol)
{
    const auto* dead = std::find_if(
        spacingCharacters.begin(), spacingCharacters.end(), [&](const SpacingCharacter& candidate) { return candidate.deadKey == symbol; });
    if (dead != spacingCharacters.end())
        return dead->character;
    constexpr std::uint32_t firstPrintable = 0x20;
    constexpr std::uint32_t firstDelete = 0x7f;
    constexpr std::uint32_t lastControl = 0x9f;
    const auto character = xkb_keysym_to_utf32(symbol);
    const bool isControl = character < firstPrintable || (character >= firstDelete && character <= lastControl);
    return isControl ? 0 : character;
}

std::string utf8Of(std::uint32_t character)
{
    // The keysym of a character is its code point with this bit, below U+0100 the point itself.
    constexpr std::uint32_t unicodeBit = 0x01000000;
    std::array<char, 8> buffer = {};
    const auto symbol = character < 0x100 ? character : character | unicodeBit;
    xkb_keysym_to_utf8(symbol, buffer.data(), buffer.size());
    return buffer.data();
}

// The symbols of keys with no modifier on, in one layout.
class BareKeys {
public:
    BareKeys(xkb_keymap* keymap, xkb_layout_index_t layout) : m_keymap(keymap), m_state(xkb_state_new(keymap))
    {
        xkb_state_update_mask(m_state.get(), 0, 0, 0, 0, 0, layout);
    }

    std::span<const xkb_keysym_t> symbolsOf(xkb_keycode_t keycode) const
    {
        const xkb_keysym_t* symbols = nullptr;
        const auto count = xkb_state_key_get_syms(m_state.get(), keycode, &symbols);
        return {symbols, static_cast<std::size_t>(std::max(count, 0))};
    }

    bool typeAToZ() const
    {
        std::bitset<26> typed;
        for (auto keycode = xkb_keymap_min_keycode(m_keymap); keycode <= xkb_keymap_max_keycode(m_keymap); ++keycode) {
            for (const auto symbol : symbolsOf(keycode)) {
                if (symbol >= XKB_KEY_a && symbol <= XKB_KEY_z)
                    typed.set(symbol - XKB_KEY_a);
            }
        }
        return typed.all();
    }

private:
    xkb_keymap* m_keymap;
    State m_state;
};

std::optional<BareKeys> asciiCapableKeys(xkb_keymap* keymap, xkb_layout_index_t active)
{
    BareKeys keys(keymap, active);
    if (keys.typeAToZ())
        return keys;
    for (xkb_layout_index_t layout = 0; layout < xkb_keymap_num_layouts(keymap); ++layout) {
        keys = BareKeys(keymap, layout);
        if (keys.typeAToZ())
            return keys;
    }
    return std::nullopt;
}

// The active layout too, which is a matter of the server's state.
std::pair<Keymap, xkb_layout_index_t> readKeymap(xkb_context* context, xcb_connection_t* connection)
{
    if (xkb_x11_setup_xkb_extension(connection, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION, XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS,
            nullptr, nullptr, nullptr, nullptr) == 0)
        return {};
    const auto device = xkb_x11_get_core_keyboard_device_id(connection);
    if (device < 0)
        return {};
    Keymap keymap(xkb_x11_keymap_new_from_device(context, connection, device, XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (!keymap)
        return {};
    const State state(xkb_x11_state_new_from_device(keymap.get(), connection, device));
    if (!state)
        return {};
    return {std::move(keymap), xkb_state_serialize_layout(state.get(), XKB_STATE_LAYOUT_EFFECTIVE)};
}

}  // namespace

void X11KeyboardLayout::ContextDeleter::operator()(xkb_context* context) const { xkb_context_unref(context); }

X11KeyboardLayout::X11KeyboardLayout(std::string displayName)
    : m_displayName(std::move(displayName)),
      m_context(xkb_context_new(static_cast<xkb_context_flags>(XKB_CONTEXT_NO_DEFAULT_INCLUDES | XKB_CONTEXT_NO_ENVIRONMENT_NAMES)))
{
}

X11KeyboardLayout::~X11KeyboardLayout() = default;

std::optional<std::string> X11KeyboardLayout::displayText(std::uint16_t virtualKeyCode)
{
    const auto keycode = keycodeOfVirtualKey(virtualKeyCode);
    const auto connection = keycode ? Connection::open(m_displayName) : nullptr;
    if (!connection || !m_context)
        return std::nullopt;
    const auto [keymap, active] = readKeymap(m_context.get(), *connection);
    const auto keys = keymap ? asciiCapableKeys(keymap.get(), active) : std::nullopt;
    if (!keys)
        return std::nullopt;
    std::string text;
    for (const auto symbol : keys->symbolsOf(*keycode)) {
        if (const auto character = characterOf(symbol))
            text += utf8Of(character);
    }
    return text.empty() ? std::nullopt : std::optional(text);
}

}  // namespace Platform::X11

#include "KeyboardShortcuts/Shortcut.h"

#include <limits>
#include <nlohmann/json.hpp>

#include "KeyboardShortcuts/SpecialKey.h"
#include "KeyboardShortcuts/Utilities.h"
#include "Platform/FatalError.h"
#include "Platform/KeyCodes.h"

namespace KeyboardShortcuts {
namespace {

using Json = nlohmann::json;

constexpr const char* keyCodeMember = "carbonKeyCode";
constexpr const char* modifiersMember = "carbonModifiers";
constexpr std::string_view replacementCharacter = "\uFFFD";

// JSON knows one kind of number, so what counts is the value and not how it is written.
std::optional<std::int64_t> integerWithin(const Json& value)
{
    if (value.is_number_unsigned() && value.get<std::uint64_t>() > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
        return std::nullopt;
    if (value.is_number_integer())
        return value.get<std::int64_t>();
    if (!value.is_number_float())
        return std::nullopt;
    const auto number = value.get<double>();
    constexpr double limit = 0x1p63;
    if (!(number >= -limit && number < limit) || static_cast<double>(static_cast<std::int64_t>(number)) != number)
        return std::nullopt;
    return static_cast<std::int64_t>(number);
}

std::optional<std::int64_t> integerMember(const Json& object, const char* name)
{
    const auto member = object.find(name);
    return member != object.end() ? integerWithin(*member) : std::nullopt;
}

}  // namespace

Shortcut::Shortcut(Key key, std::uint32_t modifierFlags)
    : m_carbonKeyCode(key.rawValue), m_carbonModifiers(::KeyboardShortcuts::carbonModifiers(modifierFlags))
{
}

Shortcut Shortcut::fromCarbon(std::int64_t carbonKeyCode, std::int64_t carbonModifiers)
{
    return {Key(carbonKeyCode), modifierFlags(carbonModifiers)};
}

std::optional<Shortcut> Shortcut::fromEvent(const Event& event)
{
    if (event.type != Event::Type::keyDown && event.type != Event::Type::keyUp)
        return std::nullopt;
    return Shortcut(Key(event.keyCode), event.modifierFlags & ~Platform::ModifierFlag::function);
}

std::optional<Shortcut> Shortcut::fromJson(std::string_view text)
{
    const auto object = Json::parse(text, nullptr, false);
    if (!object.is_object())
        return std::nullopt;
    const auto keyCode = integerMember(object, keyCodeMember);
    const auto modifiers = integerMember(object, modifiersMember);
    if (!keyCode || !modifiers)
        return std::nullopt;
    return fromCarbon(*keyCode, *modifiers);
}

std::string Shortcut::toJson() const { return Json{{keyCodeMember, m_carbonKeyCode}, {modifiersMember, m_carbonModifiers}}.dump(); }

std::uint32_t Shortcut::modifiers() const { return modifierFlags(m_carbonModifiers); }

std::string Shortcut::presentableDescription(Platform::KeyboardLayout& layout, const Texts& texts) const
{
    const auto symbols = symbolicRepresentation(modifiers());
    if (const auto* const special = specialKey(key()))
        return symbols + special->presentableDescription(texts);
    const auto character = keyToCharacter(key(), layout);
    return symbols + (character ? capitalized(*character) : std::string(replacementCharacter));
}

std::optional<std::string> Shortcut::nsMenuItemKeyEquivalent(Platform::KeyboardLayout& layout) const
{
    if (const auto* const special = specialKey(key()))
        return special->appKitMenuItemKeyEquivalent();
    const auto character = keyToCharacter(key(), layout);
    return character ? std::optional(encoded(*character)) : std::nullopt;
}

std::optional<char32_t> keyToCharacter(Key key, Platform::KeyboardLayout& layout)
{
    if (specialKey(key) != nullptr)
        return std::nullopt;
    if (key.rawValue < 0 || key.rawValue > std::numeric_limits<std::uint16_t>::max())
        Platform::fatalError("KeyboardShortcuts.keyToCharacter: key code outside 0...65535", std::to_string(key.rawValue));
    const auto text = layout.displayText(static_cast<std::uint16_t>(key.rawValue));
    return text ? singleCharacter(*text) : std::nullopt;
}

}  // namespace KeyboardShortcuts

std::size_t std::hash<KeyboardShortcuts::Shortcut>::operator()(const KeyboardShortcuts::Shortcut& shortcut) const noexcept
{
    const std::size_t first = std::hash<std::int64_t>()(shortcut.carbonKeyCode());
    return first * 31 + std::hash<std::int64_t>()(shortcut.carbonModifiers());
}

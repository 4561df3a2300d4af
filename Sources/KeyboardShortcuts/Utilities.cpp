#include "KeyboardShortcuts/Utilities.h"

#include <locale.h>
#include <wctype.h>

#include <array>
#include <cstddef>

#include "Platform/KeyCodes.h"

namespace KeyboardShortcuts {
namespace {

namespace ModifierFlag = Platform::ModifierFlag;
namespace CarbonModifier = Platform::CarbonModifier;

struct Modifier {
    std::uint32_t flag;
    std::uint32_t carbon;
    std::string_view symbol;
};

// In the order in which the symbols are shown, which is not that of the bits.
constexpr std::array modifiers = {
    Modifier{ModifierFlag::control, CarbonModifier::control, "\u2303"},
    Modifier{ModifierFlag::option, CarbonModifier::option, "\u2325"},
    Modifier{ModifierFlag::shift, CarbonModifier::shift, "\u21E7"},
    Modifier{ModifierFlag::command, CarbonModifier::command, "\u2318"},
    Modifier{ModifierFlag::function, CarbonModifier::function, "\U0001F310\uFE0E"},
};

// A locale of our own, because the process's may be Turkish, or plain ASCII. Where the C
// library has none for UTF-8, only ASCII letters have a case.
class CharacterCases {
public:
    CharacterCases() : m_locale(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr))
    {
        if (m_locale == nullptr)
            m_locale = newlocale(LC_CTYPE_MASK, "C", nullptr);
        m_toTitle = wctrans_l("totitle", m_locale);
        if (m_toTitle == nullptr)
            m_toTitle = wctrans_l("toupper", m_locale);
    }
    ~CharacterCases() { freelocale(m_locale); }
    CharacterCases(const CharacterCases&) = delete;
    CharacterCases& operator=(const CharacterCases&) = delete;

    char32_t title(char32_t character) const { return static_cast<char32_t>(towctrans_l(character, m_toTitle, m_locale)); }
    char32_t lower(char32_t character) const { return static_cast<char32_t>(towlower_l(character, m_locale)); }

private:
    locale_t m_locale;
    wctrans_t m_toTitle = nullptr;
};

const CharacterCases& characterCases()
{
    static const CharacterCases cases;
    return cases;
}

std::size_t encodedLength(unsigned char firstByte)
{
    if (firstByte < 0x80)
        return 1;
    if (firstByte < 0xE0)
        return 2;
    return firstByte < 0xF0 ? 3 : 4;
}

}  // namespace

std::uint32_t carbonModifiers(std::uint32_t modifierFlags)
{
    std::uint32_t result = 0;
    for (const auto& modifier : modifiers) {
        if ((modifierFlags & modifier.flag) != 0)
            result |= modifier.carbon;
    }
    return result;
}

std::uint32_t modifierFlags(std::int64_t carbonModifiers)
{
    std::uint32_t result = 0;
    for (const auto& modifier : modifiers) {
        if ((static_cast<std::uint64_t>(carbonModifiers) & modifier.carbon) != 0)
            result |= modifier.flag;
    }
    return result;
}

std::string symbolicRepresentation(std::uint32_t modifierFlags)
{
    std::string result;
    for (const auto& modifier : modifiers) {
        if ((modifierFlags & modifier.flag) != 0)
            result += modifier.symbol;
    }
    return result;
}

std::string encoded(char32_t character)
{
    const auto byte = [](char32_t value) { return static_cast<char>(static_cast<unsigned char>(value)); };
    const auto continuation = [&](int shift) { return byte(0x80U | ((character >> shift) & 0x3FU)); };
    if (character < 0x80)
        return {byte(character)};
    if (character < 0x800)
        return {byte(0xC0U | (character >> 6)), continuation(0)};
    if (character < 0x10000)
        return {byte(0xE0U | (character >> 12)), continuation(6), continuation(0)};
    return {byte(0xF0U | (character >> 18)), continuation(12), continuation(6), continuation(0)};
}

std::optional<char32_t> singleCharacter(std::string_view utf8)
{
    if (utf8.empty() || utf8.size() != encodedLength(static_cast<unsigned char>(utf8.front())))
        return std::nullopt;
    constexpr std::array<unsigned, 4> firstByteMasks = {0x7F, 0x1F, 0x0F, 0x07};
    char32_t character = static_cast<unsigned char>(utf8.front()) & firstByteMasks[utf8.size() - 1];
    for (const char byte : utf8.substr(1))
        character = (character << 6) | (static_cast<unsigned char>(byte) & 0x3FU);
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    // Encoding it again must give the same bytes: this is what malformed ones do not do.
    if (isSurrogate || character > 0x10FFFF || encoded(character) != utf8)
        return std::nullopt;
    return character;
}

std::string capitalized(char32_t character) { return encoded(characterCases().title(character)); }

std::string lowercased(char32_t character) { return encoded(characterCases().lower(character)); }

}  // namespace KeyboardShortcuts

#include "KeyboardShortcuts/Utilities.h"

#include <gtest/gtest.h>
#include <locale.h>

#include <string>

namespace KeyboardShortcuts {
namespace {

TEST(Utilities, TurnsEachEventFlagIntoItsCarbonBit)
{
    EXPECT_EQ(carbonModifiers(0x20000), 0x200U);
    EXPECT_EQ(carbonModifiers(0x40000), 0x1000U);
    EXPECT_EQ(carbonModifiers(0x80000), 0x800U);
    EXPECT_EQ(carbonModifiers(0x100000), 0x100U);
    EXPECT_EQ(carbonModifiers(0x800000), 0x20000U);
    EXPECT_EQ(carbonModifiers(0x9E0000), 0x21B00U);
}

TEST(Utilities, TurnsEachCarbonBitIntoItsEventFlag)
{
    EXPECT_EQ(modifierFlags(0x200), 0x20000U);
    EXPECT_EQ(modifierFlags(0x1000), 0x40000U);
    EXPECT_EQ(modifierFlags(0x800), 0x80000U);
    EXPECT_EQ(modifierFlags(0x100), 0x100000U);
    EXPECT_EQ(modifierFlags(0x20000), 0x800000U);
    EXPECT_EQ(modifierFlags(0x21B00), 0x9E0000U);
}

TEST(Utilities, DropsEveryOtherBitInBothDirections)
{
    EXPECT_EQ(carbonModifiers(0xFF61FFFF), 0U);  // caps lock, numeric pad and what no key has
    EXPECT_EQ(modifierFlags(0x40), 0U);
    EXPECT_EQ(modifierFlags(0x4000), 0U);
    EXPECT_EQ(modifierFlags(0x7FFFFFFFFFFDE4FF), 0U);
    EXPECT_EQ(modifierFlags(-1), 0x9E0000U);
}

TEST(Utilities, ShowsTheSymbolsInAFixedOrder)
{
    EXPECT_EQ(symbolicRepresentation(0), "");
    EXPECT_EQ(symbolicRepresentation(0x20000), "⇧");
    EXPECT_EQ(symbolicRepresentation(0x1E0000), "⌃⌥⇧⌘");
    EXPECT_EQ(symbolicRepresentation(0x9E0000), "⌃⌥⇧⌘\U0001F310\uFE0E");
}

TEST(Utilities, ReadsATextOfExactlyOneCharacter)
{
    EXPECT_EQ(singleCharacter("x"), U'x');
    EXPECT_EQ(singleCharacter("é"), U'é');
    EXPECT_EQ(singleCharacter("€"), U'€');
    EXPECT_EQ(singleCharacter("\U0001F310"), U'\U0001F310');
    EXPECT_EQ(singleCharacter(""), std::nullopt);
    EXPECT_EQ(singleCharacter("ch"), std::nullopt);
    EXPECT_EQ(singleCharacter("éa"), std::nullopt);
}

TEST(Utilities, RefusesMalformedText)
{
    EXPECT_EQ(singleCharacter("\xC3"), std::nullopt);              // cut short
    EXPECT_EQ(singleCharacter("\x80"), std::nullopt);              // no first byte
    EXPECT_EQ(singleCharacter("\xC3\x28"), std::nullopt);          // no continuation
    EXPECT_EQ(singleCharacter("\xC1\xA1"), std::nullopt);          // overlong
    EXPECT_EQ(singleCharacter("\xED\xA0\x80"), std::nullopt);      // surrogate
    EXPECT_EQ(singleCharacter("\xF4\x90\x80\x80"), std::nullopt);  // beyond the last character
    EXPECT_EQ(singleCharacter("\xFF\xBF\xBF\xBF"), std::nullopt);
}

TEST(Utilities, EncodesACharacterOfEveryLength)
{
    EXPECT_EQ(encoded(U'x'), "x");
    EXPECT_EQ(encoded(U'é'), "é");
    EXPECT_EQ(encoded(U'€'), "€");
    EXPECT_EQ(encoded(U'\U0001F310'), "\U0001F310");
}

TEST(Utilities, CapitalizesLettersOfAllScripts)
{
    EXPECT_EQ(capitalized(U'a'), "A");
    EXPECT_EQ(capitalized(U'ö'), "Ö");
    EXPECT_EQ(capitalized(U'é'), "É");
    EXPECT_EQ(capitalized(U'ч'), "Ч");
    EXPECT_EQ(capitalized(U'ω'), "Ω");
    EXPECT_EQ(capitalized(U'ư'), "Ư");
    EXPECT_EQ(capitalized(U'ǆ'), "ǅ");
}

TEST(Utilities, LeavesWhatHasNoTitleCase)
{
    EXPECT_EQ(capitalized(U'A'), "A");
    EXPECT_EQ(capitalized(U'7'), "7");
    EXPECT_EQ(capitalized(U','), ",");
    EXPECT_EQ(capitalized(U'ß'), "ß");
    EXPECT_EQ(capitalized(U'א'), "א");
    EXPECT_EQ(capitalized(U'ა'), "ა");  // Georgian has an upper, but no title case
}

TEST(Utilities, LowersLetters)
{
    EXPECT_EQ(lowercased(U'X'), "x");
    EXPECT_EQ(lowercased(U'Ö'), "ö");
    EXPECT_EQ(lowercased(U'x'), "x");
    EXPECT_EQ(lowercased(U'7'), "7");
}

TEST(Utilities, HasOneCaseWhateverTheProcessLocaleIs)
{
    const std::string former = setlocale(LC_ALL, nullptr);
    ASSERT_NE(setlocale(LC_ALL, "C"), nullptr);
    EXPECT_EQ(capitalized(U'i'), "I");
    EXPECT_EQ(capitalized(U'é'), "É");
    setlocale(LC_ALL, former.c_str());
}

}  // namespace
}  // namespace KeyboardShortcuts

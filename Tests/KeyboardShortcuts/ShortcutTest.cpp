#include "KeyboardShortcuts/Shortcut.h"

#include <gtest/gtest.h>

#include <limits>
#include <unordered_set>

#include "KeyboardShortcuts/Name.h"
#include "Support/CallLog.h"
#include "Support/FakeKeyboardLayout.h"

namespace KeyboardShortcuts {
namespace {

class ShortcutTest : public testing::Test {
protected:
    std::string description(std::int64_t keyCode, std::int64_t modifiers)
    {
        return Shortcut::fromCarbon(keyCode, modifiers).presentableDescription(m_layout, Texts());
    }

    TestSupport::CallLog m_log;
    TestSupport::FakeKeyboardLayout m_layout{m_log};
};

TEST_F(ShortcutTest, StoresKeyAndCarbonModifiers)
{
    const Shortcut shortcut(Key::x, 0x180000);
    EXPECT_EQ(shortcut.carbonKeyCode(), 7);
    EXPECT_EQ(shortcut.carbonModifiers(), 0x900);
    EXPECT_EQ(shortcut.key(), Key::x);
    EXPECT_EQ(shortcut.modifiers(), 0x180000U);
}

TEST_F(ShortcutTest, DropsModifiersThatDoNotExist)
{
    EXPECT_EQ(Shortcut::fromCarbon(0, 0x4100).carbonModifiers(), 0x100);
    EXPECT_EQ(Shortcut::fromCarbon(0, 0x40).carbonModifiers(), 0);
    EXPECT_EQ(Shortcut::fromCarbon(0, 0x1FFFFFFFF).carbonModifiers(), 0x21B00);
    EXPECT_EQ(Shortcut(Key::a, 0x110000).carbonModifiers(), 0x100);
}

TEST_F(ShortcutTest, IsEqualAndHashedByBothFields)
{
    const auto shortcut = Shortcut::fromCarbon(7, 0x900);
    EXPECT_EQ(shortcut, Shortcut(Key::x, 0x180000));
    EXPECT_NE(shortcut, Shortcut::fromCarbon(8, 0x900));
    EXPECT_NE(shortcut, Shortcut::fromCarbon(7, 0x100));
    EXPECT_EQ((std::unordered_set<Shortcut>{shortcut, Shortcut::fromCarbon(7, 0x4900), Shortcut::fromCarbon(7, 0x100)}).size(), 2U);
}

TEST_F(ShortcutTest, IsMadeFromKeyEventsOnly)
{
    EXPECT_EQ(Shortcut::fromEvent({Event::Type::keyDown, 7, 0x180000}), Shortcut::fromCarbon(7, 0x900));
    EXPECT_EQ(Shortcut::fromEvent({Event::Type::keyUp, 37, 0x100000}), Shortcut::fromCarbon(37, 0x100));
    EXPECT_EQ(Shortcut::fromEvent({Event::Type::flagsChanged, 55, 0x100000}), std::nullopt);
    EXPECT_EQ(Shortcut::fromEvent({Event::Type::leftMouseUp, 0, 0}), std::nullopt);
    EXPECT_EQ(Shortcut::fromEvent({Event::Type::rightMouseUp, 0, 0}), std::nullopt);
}

TEST_F(ShortcutTest, FromAnEventHasNeitherFunctionNorLocks)
{
    EXPECT_EQ(Shortcut::fromEvent({Event::Type::keyDown, 96, 0xB10000}), Shortcut::fromCarbon(96, 0x100));
    EXPECT_EQ(Shortcut(Key::f5, 0x800000).carbonModifiers(), 0x20000);
}

TEST_F(ShortcutTest, ShowsModifiersAndThenTheKey)
{
    EXPECT_EQ(description(35, 0x1900), "⌃⌥⌘P");
    EXPECT_EQ(description(7, 0x900), "⌥⌘X");
    EXPECT_EQ(description(0, 0x1B00), "⌃⌥⇧⌘A");
    EXPECT_EQ(description(0, 0x21B00), "⌃⌥⇧⌘\U0001F310\uFE0EA");
    EXPECT_EQ(description(47, 0), ".");
    EXPECT_EQ(description(122, 0x200), "⇧F1");
}

TEST_F(ShortcutTest, ShowsTheSpaceKeyByItsName)
{
    EXPECT_EQ(description(49, 0x100), "⌘Space");
    EXPECT_TRUE(m_log.lines().empty());
}

TEST_F(ShortcutTest, ShowsACapitalOfTheLayoutsLetter)
{
    m_layout.setText(41, "ö");
    m_layout.setText(19, "é");
    m_layout.setText(27, "ß");
    EXPECT_EQ(description(41, 0x100), "⌘Ö");
    EXPECT_EQ(description(19, 0x100), "⌘É");
    EXPECT_EQ(description(27, 0x100), "⌘ß");
}

TEST_F(ShortcutTest, ShowsAReplacementWhereTheLayoutHasNoSingleCharacter)
{
    m_layout.setText(7, "ch");
    EXPECT_EQ(description(7, 0x100), "⌘\uFFFD");
    m_layout.setText(7, "");
    EXPECT_EQ(description(7, 0x100), "⌘\uFFFD");
    m_layout.removeText(7);
    EXPECT_EQ(description(7, 0x100), "⌘\uFFFD");
    EXPECT_EQ(description(74, 0), "\uFFFD");  // mute
}

TEST_F(ShortcutTest, AsksTheLayoutAfreshAndForTheBareKey)
{
    EXPECT_EQ(keyToCharacter(Key::x, m_layout), U'x');
    m_layout.setText(7, "q");
    EXPECT_EQ(keyToCharacter(Key::x, m_layout), U'q');
    EXPECT_EQ(m_log.count("keyboardLayout.displayText 7"), 2);
}

TEST_F(ShortcutTest, AsksTheLayoutForNoSpecialKey)
{
    m_layout.setText(36, "x");
    EXPECT_EQ(keyToCharacter(Key::return_, m_layout), std::nullopt);
    EXPECT_TRUE(m_log.lines().empty());
}

TEST_F(ShortcutTest, TranslatesCodesOf16Bits)
{
    m_layout.setText(65535, "w");
    EXPECT_EQ(keyToCharacter(Key(65535), m_layout), U'w');
}

using ShortcutDeathTest = ShortcutTest;

TEST_F(ShortcutDeathTest, StopsTheProgramForCodesThatCannotBeTranslated)
{
    EXPECT_DEATH((void)description(65536, 0), "keyToCharacter.*65536");
    EXPECT_DEATH((void)description(-1, 0), "keyToCharacter.*-1");
}

TEST_F(ShortcutTest, NamesItsKeyForMenus)
{
    EXPECT_EQ(Shortcut::fromCarbon(7, 0x900).nsMenuItemKeyEquivalent(m_layout), "x");
    EXPECT_EQ(Shortcut::fromCarbon(122, 0).nsMenuItemKeyEquivalent(m_layout), "\uF704");
    EXPECT_EQ(Shortcut::fromCarbon(83, 0x100).nsMenuItemKeyEquivalent(m_layout), std::nullopt);  // keypad 1
    EXPECT_EQ(Shortcut::fromCarbon(74, 0x100).nsMenuItemKeyEquivalent(m_layout), std::nullopt);
}

TEST_F(ShortcutTest, WritesTwoIntegerMembers)
{
    EXPECT_EQ(Shortcut::fromCarbon(35, 6400).toJson(), R"({"carbonKeyCode":35,"carbonModifiers":6400})");
}

TEST_F(ShortcutTest, ReadsMembersInAnyOrderAndSpacing)
{
    const auto expected = Shortcut::fromCarbon(35, 6400);
    EXPECT_EQ(Shortcut::fromJson(expected.toJson()), expected);
    EXPECT_EQ(Shortcut::fromJson("\n{ \"carbonModifiers\" : 6400,\t\"carbonKeyCode\":35 } "), expected);
    EXPECT_EQ(Shortcut::fromJson(R"({"carbonKeyCode":35,"note":[null],"carbonModifiers":6400})"), expected);
}

TEST_F(ShortcutTest, ReadsNumbersByTheirValue)
{
    const auto expected = Shortcut::fromCarbon(7, 0x900);
    EXPECT_EQ(Shortcut::fromJson(R"({"carbonKeyCode":7.0,"carbonModifiers":2304})"), expected);
    EXPECT_EQ(Shortcut::fromJson(R"({"carbonKeyCode":7e0,"carbonModifiers":23.04e2})"), expected);
    EXPECT_EQ(Shortcut::fromJson(R"({"carbonKeyCode":-9223372036854775808,"carbonModifiers":0})"),
        Shortcut::fromCarbon(std::numeric_limits<std::int64_t>::min(), 0));
}

TEST_F(ShortcutTest, NormalisesModifiersThatItReads)
{
    EXPECT_EQ(Shortcut::fromJson(R"({"carbonKeyCode":7,"carbonModifiers":18688})"), Shortcut::fromCarbon(7, 0x900));  // 0x4900
}

class ForeignText : public testing::TestWithParam<const char*> { };

TEST_P(ForeignText, IsNoShortcut) { EXPECT_EQ(Shortcut::fromJson(GetParam()), std::nullopt); }

INSTANTIATE_TEST_SUITE_P(All, ForeignText,
    testing::Values("", "x", "null", "7", "[7,2304]", "{}", R"({"carbonKeyCode":7})", R"({"carbonModifiers":2304})",
        R"({"carbonKeyCode":7,"carbonModifiers":2304)", R"({"carbonKeyCode":7,"carbonModifiers":2304} x)",
        R"({"carbonKeyCode":"7","carbonModifiers":2304})", R"({"carbonKeyCode":true,"carbonModifiers":2304})",
        R"({"carbonKeyCode":null,"carbonModifiers":2304})", R"({"carbonKeyCode":7.5,"carbonModifiers":2304})",
        R"({"carbonKeyCode":7,"carbonModifiers":0.5})", R"({"carbonKeyCode":9223372036854775808,"carbonModifiers":0})",
        R"({"carbonKeyCode":1e300,"carbonModifiers":0})", R"({"CarbonKeyCode":7,"carbonModifiers":0})", "{\"\xFF\":1}",
        "{'carbonKeyCode':7,'carbonModifiers':2304}"));

TEST(Name, IsEqualAndHashedByItsRawValueOnly)
{
    const Name plain("toggleCrosshair");
    const Name withDefault("toggleCrosshair", Shortcut::fromCarbon(7, 0x900));
    EXPECT_EQ(plain, withDefault);
    EXPECT_NE(plain, Name("toggleLoupe"));
    EXPECT_EQ((std::unordered_set<Name>{plain, withDefault, Name("toggleLoupe")}).size(), 2U);
}

}  // namespace
}  // namespace KeyboardShortcuts

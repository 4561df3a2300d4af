#include "Platform/X11/Keys/X11KeyboardLayout.h"

#include <gtest/gtest.h>

#include "Support/PrivateServer.h"
#include "Support/XTestKeyboard.h"

namespace {

using Text = std::optional<std::string>;

constexpr std::uint16_t keyA = 0;
constexpr std::uint16_t keyZ = 6;
constexpr std::uint16_t keyX = 7;
constexpr std::uint16_t keyIsoSection = 10;
constexpr std::uint16_t keyQ = 12;
constexpr std::uint16_t keyOne = 18;
constexpr std::uint16_t keyEqual = 24;
constexpr std::uint16_t keyLeftBracket = 33;
constexpr std::uint16_t keyQuote = 39;
constexpr std::uint16_t keySemicolon = 41;
constexpr std::uint16_t keyBacktick = 50;

class X11KeyboardLayoutTest : public testing::Test {
protected:
    Text textOf(std::uint16_t key) { return m_layout.displayText(key); }

    TestSupport::PrivateServer m_server;
    TestSupport::XTestKeyboard m_keyboard{m_server.displayName()};
    Platform::X11::X11KeyboardLayout m_layout{m_server.displayName()};
};

}  // namespace

TEST_F(X11KeyboardLayoutTest, TellsWhatTheBareKeyTypes)
{
    m_keyboard.setLayout("us");
    EXPECT_EQ(textOf(keyA), "a");
    EXPECT_EQ(textOf(keyX), "x");
    EXPECT_EQ(textOf(keyOne), "1");
    EXPECT_EQ(textOf(keyBacktick), "`");
    EXPECT_EQ(textOf(keySemicolon), ";");
}

TEST_F(X11KeyboardLayoutTest, FollowsTheLayoutWithoutBeingTold)
{
    m_keyboard.setLayout("us");
    EXPECT_EQ(textOf(keyZ), "z");
    m_keyboard.setLayout("de");
    EXPECT_EQ(textOf(keyZ), "y");
    m_keyboard.setLayout("fr");
    EXPECT_EQ(textOf(keyQ), "a");
    EXPECT_EQ(textOf(keyOne), "&");
    m_keyboard.setLayout("us", "dvorak");
    EXPECT_EQ(textOf(keyX), "q");
}

TEST_F(X11KeyboardLayoutTest, KnowsCharactersBeyondAscii)
{
    m_keyboard.setLayout("de");
    EXPECT_EQ(textOf(keyLeftBracket), "\u00fc");
    EXPECT_EQ(textOf(keyQuote), "\u00e4");
    EXPECT_EQ(textOf(keyIsoSection), "<");
}

TEST_F(X11KeyboardLayoutTest, DeadKeysGiveTheirSpacingCharacter)
{
    m_keyboard.setLayout("de");
    EXPECT_EQ(textOf(keyBacktick), "^");
    EXPECT_EQ(textOf(keyEqual), "\u00b4");
    m_keyboard.setLayout("us", "intl");
    EXPECT_EQ(textOf(keyBacktick), "`");
    EXPECT_EQ(textOf(keyQuote), "\u00b4");
    m_keyboard.setLayout("fr");
    EXPECT_EQ(textOf(keyLeftBracket), "^");
}

TEST_F(X11KeyboardLayoutTest, UsesTheActiveLayoutWhereItTypesAToZ)
{
    m_keyboard.setLayout("us,de");
    m_keyboard.lockGroup(1);
    EXPECT_EQ(textOf(keyZ), "y");
    m_keyboard.lockGroup(0);
    EXPECT_EQ(textOf(keyZ), "z");
}

TEST_F(X11KeyboardLayoutTest, UsesTheFirstConfiguredLayoutThatTypesAToZWhereTheActiveOneDoesNot)
{
    m_keyboard.setLayout("ru,us");
    EXPECT_EQ(textOf(keyX), "x");
    m_keyboard.setLayout("us,ru");
    m_keyboard.lockGroup(1);
    EXPECT_EQ(textOf(keyX), "x");
    m_keyboard.setLayout("ru,gr,de,us");
    m_keyboard.lockGroup(1);
    EXPECT_EQ(textOf(keyZ), "y");
}

TEST_F(X11KeyboardLayoutTest, KnowsNothingWhereNoLayoutTypesAToZ)
{
    m_keyboard.setLayout("ru");
    EXPECT_EQ(textOf(keyX), std::nullopt);
    EXPECT_EQ(textOf(keyOne), std::nullopt);
}

TEST_F(X11KeyboardLayoutTest, IsNotMisledByLocksAndHeldModifiers)
{
    m_keyboard.setLayout("us");
    m_keyboard.lockModifiers(XCB_MOD_MASK_LOCK | XCB_MOD_MASK_SHIFT);
    EXPECT_EQ(textOf(keyX), "x");
    EXPECT_EQ(textOf(keyOne), "1");
}

TEST_F(X11KeyboardLayoutTest, KeysThatTypeNothingHaveNoText)
{
    m_keyboard.setLayout("us");
    for (const auto key : std::initializer_list<std::uint16_t>{36, 53, 51, 48, 122, 123, 56, 63, 999})
        EXPECT_EQ(textOf(key), std::nullopt) << "key " << key;
}

TEST_F(X11KeyboardLayoutTest, KnowsNothingWithoutAServer)
{
    Platform::X11::X11KeyboardLayout layout(":9999");
    EXPECT_EQ(layout.displayText(keyX), std::nullopt);
}

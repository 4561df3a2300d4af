#include "KeyboardShortcuts/MenuItem.h"

#include <gtest/gtest.h>

#include "Support/CallLog.h"
#include "Support/FakeKeyboardLayout.h"

namespace KeyboardShortcuts {
namespace {

class MenuItemTest : public testing::Test {
protected:
    // The title of the item found; empty where none is.
    std::string match(std::int64_t keyCode, std::int64_t carbonModifiers, const std::vector<MenuItem>& menu)
    {
        const auto* const item = menuItemWithMatchingShortcut(Shortcut::fromCarbon(keyCode, carbonModifiers), menu, m_layout);
        return item != nullptr ? item->title : "";
    }

    TestSupport::CallLog m_log;
    TestSupport::FakeKeyboardLayout m_layout{m_log};
};

TEST_F(MenuItemTest, MatchesKeyTextAndModifiersExactly)
{
    const std::vector<MenuItem> menu = {{"Quit", "q", 0x100000, {}}};
    EXPECT_EQ(match(12, 0x100, menu), "Quit");
    EXPECT_EQ(match(12, 0x900, menu), "");
    EXPECT_EQ(match(12, 0, menu), "");
    EXPECT_EQ(match(13, 0x100, menu), "");
}

TEST_F(MenuItemTest, MasksNoOtherBitsOfTheItem) { EXPECT_EQ(match(12, 0x100, {{"Locked", "q", 0x110000, {}}}), ""); }

TEST_F(MenuItemTest, TakesAnUpperCaseKeyEquivalentAsShift)
{
    const std::vector<MenuItem> menu = {{"Save As", "S", 0x100000, {}}};
    EXPECT_EQ(match(1, 0x300, menu), "Save As");
    EXPECT_EQ(match(1, 0x100, menu), "");
    EXPECT_EQ(match(1, 0x300, {{"Explicit", "s", 0x120000, {}}}), "Explicit");
    EXPECT_EQ(match(1, 0x300, {{"Both", "S", 0x120000, {}}}), "Both");
}

TEST_F(MenuItemTest, LowersLettersOutsideAscii)
{
    m_layout.setText(41, "ö");
    EXPECT_EQ(match(41, 0x300, {{"Open", "Ö", 0x100000, {}}}), "Open");
}

TEST_F(MenuItemTest, DoesNotTakeALowerCaseKeyEquivalentAsShift)
{
    EXPECT_EQ(match(1, 0x300, {{"Save", "s", 0x100000, {}}}), "");
    EXPECT_EQ(match(18, 0x300, {{"One", "1", 0x100000, {}}}), "");
}

TEST_F(MenuItemTest, MatchesSpecialKeysByTheirCharacter)
{
    const std::vector<MenuItem> menu = {{"Help", "\uF704", 0, {}}, {"Close", "\x1B", 0x100000, {}}, {"One", "1", 0x100000, {}}};
    EXPECT_EQ(match(122, 0, menu), "Help");
    EXPECT_EQ(match(53, 0x100, menu), "Close");
    EXPECT_EQ(match(83, 0x100, menu), "");  // keypad 1
}

TEST_F(MenuItemTest, NeverMatchesAKeyWithoutText)
{
    EXPECT_EQ(match(74, 0, {{"No key", "", 0, {}}}), "");
    EXPECT_EQ(match(83, 0, {{"No key", "", 0, {}}}), "");
}

TEST_F(MenuItemTest, SearchesDepthFirstInOrder)
{
    const MenuItem deep{"Deep", "x", 0x100000, {}};
    const std::vector<MenuItem> menu = {
        {"First", "a", 0x100000, {}}, {"Parent", "", 0, {{"Middle", "", 0, {deep}}, {"Sibling", "x", 0x100000, {}}}}, {"Last", "x", 0x100000, {}}};
    EXPECT_EQ(match(7, 0x100, menu), "Deep");
    EXPECT_EQ(match(0, 0x100, menu), "First");
    EXPECT_EQ(match(8, 0x100, menu), "");
}

TEST_F(MenuItemTest, FindsAnItemBeforeThoseOfItsSubmenu)
{
    EXPECT_EQ(match(7, 0x100, {{"Parent", "x", 0x100000, {{"Child", "x", 0x100000, {}}}}}), "Parent");
}

TEST_F(MenuItemTest, AnswersWithTheItemItself)
{
    const std::vector<MenuItem> menu = {{"Quit", "q", 0x100000, {}}};
    EXPECT_EQ(menuItemWithMatchingShortcut(Shortcut::fromCarbon(12, 0x100), menu, m_layout), &menu[0]);
}

}  // namespace
}  // namespace KeyboardShortcuts

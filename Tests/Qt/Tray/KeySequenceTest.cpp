#include "Platform/Qt/Tray/KeySequence.h"

#include <gtest/gtest.h>

namespace Platform {
namespace {

std::string shown(const std::string& text, std::uint32_t modifierMask)
{
    return keySequenceOf({.text = text, .modifierMask = modifierMask}).toString(QKeySequence::PortableText).toStdString();
}

TEST(KeySequence, NamesTheKeyInUpperCase)
{
    EXPECT_EQ(shown("x", 0), "X");
    EXPECT_EQ(shown("7", 0), "7");
    EXPECT_EQ(shown(",", 0), ",");
    EXPECT_EQ(shown("ö", 0), "Ö");
}

TEST(KeySequence, NamesEveryModifier)
{
    EXPECT_EQ(shown("x", 0x180000), "Meta+Alt+X");
    EXPECT_EQ(shown("x", 0x40000), "Ctrl+X");
    EXPECT_EQ(shown("x", 0x20000), "Shift+X");
    EXPECT_EQ(shown("x", 0x1e0000), "Meta+Ctrl+Alt+Shift+X");
}

TEST(KeySequence, NamesKeysThatTypeNothing)
{
    EXPECT_EQ(shown("\uF700", 0x100000), "Meta+Up");
    EXPECT_EQ(shown("\uF703", 0), "Right");
    EXPECT_EQ(shown("\uF704", 0), "F1");
    EXPECT_EQ(shown("\uF70F", 0), "F12");
    EXPECT_EQ(shown("\uF717", 0), "F20");
    EXPECT_EQ(shown("\uF728", 0), "Del");
    EXPECT_EQ(shown("\uF72D", 0), "PgDown");
    EXPECT_EQ(shown("\uF746", 0), "Help");
    EXPECT_EQ(shown("\x0D", 0), "Return");
    EXPECT_EQ(shown("\x03", 0), "Enter");
    EXPECT_EQ(shown("\x08", 0), "Backspace");
    EXPECT_EQ(shown("\x1B", 0), "Esc");
    EXPECT_EQ(shown("\t", 0), "Tab");
    EXPECT_EQ(shown(" ", 0), "Space");
}

TEST(KeySequence, IsEmptyWithoutAKeyThatHasAName)
{
    EXPECT_EQ(shown("", 0x100000), "");
    EXPECT_EQ(shown("xy", 0x100000), "");
    EXPECT_EQ(shown("\x01", 0x100000), "");
    EXPECT_EQ(shown("\uF8FF", 0x100000), "");
}

}  // namespace
}  // namespace Platform

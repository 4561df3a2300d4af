#include "KeyboardShortcuts/Key.h"

#include <gtest/gtest.h>

#include <unordered_set>

namespace KeyboardShortcuts {
namespace {

TEST(Key, NamesTheLetters)
{
    EXPECT_EQ(Key::a.rawValue, 0);
    EXPECT_EQ(Key::b.rawValue, 11);
    EXPECT_EQ(Key::c.rawValue, 8);
    EXPECT_EQ(Key::d.rawValue, 2);
    EXPECT_EQ(Key::e.rawValue, 14);
    EXPECT_EQ(Key::f.rawValue, 3);
    EXPECT_EQ(Key::g.rawValue, 5);
    EXPECT_EQ(Key::h.rawValue, 4);
    EXPECT_EQ(Key::i.rawValue, 34);
    EXPECT_EQ(Key::j.rawValue, 38);
    EXPECT_EQ(Key::k.rawValue, 40);
    EXPECT_EQ(Key::l.rawValue, 37);
    EXPECT_EQ(Key::m.rawValue, 46);
    EXPECT_EQ(Key::n.rawValue, 45);
    EXPECT_EQ(Key::o.rawValue, 31);
    EXPECT_EQ(Key::p.rawValue, 35);
    EXPECT_EQ(Key::q.rawValue, 12);
    EXPECT_EQ(Key::r.rawValue, 15);
    EXPECT_EQ(Key::s.rawValue, 1);
    EXPECT_EQ(Key::t.rawValue, 17);
    EXPECT_EQ(Key::u.rawValue, 32);
    EXPECT_EQ(Key::v.rawValue, 9);
    EXPECT_EQ(Key::w.rawValue, 13);
    EXPECT_EQ(Key::x.rawValue, 7);
    EXPECT_EQ(Key::y.rawValue, 16);
    EXPECT_EQ(Key::z.rawValue, 6);
}

TEST(Key, NamesTheDigits)
{
    EXPECT_EQ(Key::zero.rawValue, 29);
    EXPECT_EQ(Key::one.rawValue, 18);
    EXPECT_EQ(Key::two.rawValue, 19);
    EXPECT_EQ(Key::three.rawValue, 20);
    EXPECT_EQ(Key::four.rawValue, 21);
    EXPECT_EQ(Key::five.rawValue, 23);
    EXPECT_EQ(Key::six.rawValue, 22);
    EXPECT_EQ(Key::seven.rawValue, 26);
    EXPECT_EQ(Key::eight.rawValue, 28);
    EXPECT_EQ(Key::nine.rawValue, 25);
}

TEST(Key, NamesTheModifierKeys)
{
    EXPECT_EQ(Key::capsLock.rawValue, 57);
    EXPECT_EQ(Key::shift.rawValue, 56);
    EXPECT_EQ(Key::function.rawValue, 63);
    EXPECT_EQ(Key::control.rawValue, 59);
    EXPECT_EQ(Key::option.rawValue, 58);
    EXPECT_EQ(Key::command.rawValue, 55);
    EXPECT_EQ(Key::rightCommand.rawValue, 54);
    EXPECT_EQ(Key::rightOption.rawValue, 61);
    EXPECT_EQ(Key::rightControl.rawValue, 62);
    EXPECT_EQ(Key::rightShift.rawValue, 60);
}

TEST(Key, NamesThePunctuation)
{
    EXPECT_EQ(Key::return_.rawValue, 36);
    EXPECT_EQ(Key::backslash.rawValue, 42);
    EXPECT_EQ(Key::backtick.rawValue, 50);
    EXPECT_EQ(Key::comma.rawValue, 43);
    EXPECT_EQ(Key::equal.rawValue, 24);
    EXPECT_EQ(Key::minus.rawValue, 27);
    EXPECT_EQ(Key::period.rawValue, 47);
    EXPECT_EQ(Key::quote.rawValue, 39);
    EXPECT_EQ(Key::semicolon.rawValue, 41);
    EXPECT_EQ(Key::slash.rawValue, 44);
    EXPECT_EQ(Key::space.rawValue, 49);
    EXPECT_EQ(Key::tab.rawValue, 48);
    EXPECT_EQ(Key::leftBracket.rawValue, 33);
    EXPECT_EQ(Key::rightBracket.rawValue, 30);
}

TEST(Key, NamesTheNavigationKeys)
{
    EXPECT_EQ(Key::pageUp.rawValue, 116);
    EXPECT_EQ(Key::pageDown.rawValue, 121);
    EXPECT_EQ(Key::home.rawValue, 115);
    EXPECT_EQ(Key::end.rawValue, 119);
    EXPECT_EQ(Key::upArrow.rawValue, 126);
    EXPECT_EQ(Key::rightArrow.rawValue, 124);
    EXPECT_EQ(Key::downArrow.rawValue, 125);
    EXPECT_EQ(Key::leftArrow.rawValue, 123);
    EXPECT_EQ(Key::escape.rawValue, 53);
    EXPECT_EQ(Key::delete_.rawValue, 51);
    EXPECT_EQ(Key::deleteForward.rawValue, 117);
    EXPECT_EQ(Key::help.rawValue, 114);
}

TEST(Key, NamesTheMediaKeys)
{
    EXPECT_EQ(Key::mute.rawValue, 74);
    EXPECT_EQ(Key::volumeUp.rawValue, 72);
    EXPECT_EQ(Key::volumeDown.rawValue, 73);
}

TEST(Key, NamesTheFunctionKeys)
{
    EXPECT_EQ(Key::f1.rawValue, 122);
    EXPECT_EQ(Key::f2.rawValue, 120);
    EXPECT_EQ(Key::f3.rawValue, 99);
    EXPECT_EQ(Key::f4.rawValue, 118);
    EXPECT_EQ(Key::f5.rawValue, 96);
    EXPECT_EQ(Key::f6.rawValue, 97);
    EXPECT_EQ(Key::f7.rawValue, 98);
    EXPECT_EQ(Key::f8.rawValue, 100);
    EXPECT_EQ(Key::f9.rawValue, 101);
    EXPECT_EQ(Key::f10.rawValue, 109);
    EXPECT_EQ(Key::f11.rawValue, 103);
    EXPECT_EQ(Key::f12.rawValue, 111);
    EXPECT_EQ(Key::f13.rawValue, 105);
    EXPECT_EQ(Key::f14.rawValue, 107);
    EXPECT_EQ(Key::f15.rawValue, 113);
    EXPECT_EQ(Key::f16.rawValue, 106);
    EXPECT_EQ(Key::f17.rawValue, 64);
    EXPECT_EQ(Key::f18.rawValue, 79);
    EXPECT_EQ(Key::f19.rawValue, 80);
    EXPECT_EQ(Key::f20.rawValue, 90);
}

TEST(Key, NamesTheKeypad)
{
    EXPECT_EQ(Key::keypad0.rawValue, 82);
    EXPECT_EQ(Key::keypad1.rawValue, 83);
    EXPECT_EQ(Key::keypad2.rawValue, 84);
    EXPECT_EQ(Key::keypad3.rawValue, 85);
    EXPECT_EQ(Key::keypad4.rawValue, 86);
    EXPECT_EQ(Key::keypad5.rawValue, 87);
    EXPECT_EQ(Key::keypad6.rawValue, 88);
    EXPECT_EQ(Key::keypad7.rawValue, 89);
    EXPECT_EQ(Key::keypad8.rawValue, 91);
    EXPECT_EQ(Key::keypad9.rawValue, 92);
    EXPECT_EQ(Key::keypadClear.rawValue, 71);
    EXPECT_EQ(Key::keypadDecimal.rawValue, 65);
    EXPECT_EQ(Key::keypadDivide.rawValue, 75);
    EXPECT_EQ(Key::keypadEnter.rawValue, 76);
    EXPECT_EQ(Key::keypadEquals.rawValue, 81);
    EXPECT_EQ(Key::keypadMinus.rawValue, 78);
    EXPECT_EQ(Key::keypadMultiply.rawValue, 67);
    EXPECT_EQ(Key::keypadPlus.rawValue, 69);
}

TEST(Key, TakesAnyCode)
{
    EXPECT_EQ(Key(70000).rawValue, 70000);
    EXPECT_EQ(Key(-1).rawValue, -1);
}

TEST(Key, IsEqualAndHashedByItsCode)
{
    EXPECT_EQ(Key(7), Key::x);
    EXPECT_NE(Key(7), Key(8));
    EXPECT_EQ((std::unordered_set<Key>{Key(7), Key::x, Key::c}).size(), 2U);
}

}  // namespace
}  // namespace KeyboardShortcuts

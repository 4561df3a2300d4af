#include "KeyboardShortcuts/SpecialKey.h"

#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <string>

namespace KeyboardShortcuts {
namespace {

struct Expectation {
    std::int64_t keyCode;
    const char* name;
    std::string text;
    std::optional<std::string> menuItemKeyEquivalent;
};

void PrintTo(const Expectation& expectation, std::ostream* stream) { *stream << expectation.name; }

class SpecialKeyTable : public testing::TestWithParam<Expectation> { };

TEST_P(SpecialKeyTable, HasItsTextsWhateverTheLayoutIs)
{
    const auto* const special = specialKey(Key(GetParam().keyCode));
    ASSERT_NE(special, nullptr);
    EXPECT_EQ(special->presentableDescription(Texts()), GetParam().text);
    EXPECT_EQ(special->appKitMenuItemKeyEquivalent(), GetParam().menuItemKeyEquivalent);
}

INSTANTIATE_TEST_SUITE_P(All, SpecialKeyTable,
    testing::Values(Expectation{36, "Return", "↩", "\r"}, Expectation{51, "Delete", "⌫", "\b"}, Expectation{117, "DeleteForward", "⌦", "\uF728"},
        Expectation{119, "End", "↘", "\uF72B"}, Expectation{53, "Escape", "⎋", "\x1B"}, Expectation{114, "Help", "?\u20DD", "\uF746"},
        Expectation{115, "Home", "↖", "\uF729"}, Expectation{49, "Space", "Space", " "}, Expectation{48, "Tab", "⇥", "\t"},
        Expectation{116, "PageUp", "⇞", "\uF72C"}, Expectation{121, "PageDown", "⇟", "\uF72D"}, Expectation{126, "UpArrow", "↑", "\uF700"},
        Expectation{124, "RightArrow", "→", "\uF703"}, Expectation{125, "DownArrow", "↓", "\uF701"}, Expectation{123, "LeftArrow", "←", "\uF702"},
        Expectation{122, "F1", "F1", "\uF704"}, Expectation{120, "F2", "F2", "\uF705"}, Expectation{99, "F3", "F3", "\uF706"},
        Expectation{118, "F4", "F4", "\uF707"}, Expectation{96, "F5", "F5", "\uF708"}, Expectation{97, "F6", "F6", "\uF709"},
        Expectation{98, "F7", "F7", "\uF70A"}, Expectation{100, "F8", "F8", "\uF70B"}, Expectation{101, "F9", "F9", "\uF70C"},
        Expectation{109, "F10", "F10", "\uF70D"}, Expectation{103, "F11", "F11", "\uF70E"}, Expectation{111, "F12", "F12", "\uF70F"},
        Expectation{105, "F13", "F13", "\uF710"}, Expectation{107, "F14", "F14", "\uF711"}, Expectation{113, "F15", "F15", "\uF712"},
        Expectation{106, "F16", "F16", "\uF713"}, Expectation{64, "F17", "F17", "\uF714"}, Expectation{79, "F18", "F18", "\uF715"},
        Expectation{80, "F19", "F19", "\uF716"}, Expectation{90, "F20", "F20", "\uF717"}, Expectation{82, "Keypad0", "0\u20E3", std::nullopt},
        Expectation{83, "Keypad1", "1\u20E3", std::nullopt}, Expectation{84, "Keypad2", "2\u20E3", std::nullopt},
        Expectation{85, "Keypad3", "3\u20E3", std::nullopt}, Expectation{86, "Keypad4", "4\u20E3", std::nullopt},
        Expectation{87, "Keypad5", "5\u20E3", std::nullopt}, Expectation{88, "Keypad6", "6\u20E3", std::nullopt},
        Expectation{89, "Keypad7", "7\u20E3", std::nullopt}, Expectation{91, "Keypad8", "8\u20E3", std::nullopt},
        Expectation{92, "Keypad9", "9\u20E3", std::nullopt}, Expectation{71, "KeypadClear", "☒\u20E3", "\uF739"},
        Expectation{65, "KeypadDecimal", ".\u20E3", std::nullopt}, Expectation{75, "KeypadDivide", "/\u20E3", std::nullopt},
        Expectation{76, "KeypadEnter", "↩\u20E3", "\x03"}, Expectation{81, "KeypadEquals", "=\u20E3", std::nullopt},
        Expectation{78, "KeypadMinus", "-\u20E3", std::nullopt}, Expectation{67, "KeypadMultiply", "*\u20E3", std::nullopt},
        Expectation{69, "KeypadPlus", "+\u20E3", std::nullopt}),
    [](const auto& parameter) { return std::string(parameter.param.name); });

TEST(SpecialKey, IsNoneOfTheOtherKeys)
{
    int count = 0;
    for (std::int64_t keyCode = -10; keyCode < 300; ++keyCode)
        count += specialKey(Key(keyCode)) != nullptr ? 1 : 0;
    EXPECT_EQ(count, 53);
    EXPECT_EQ(specialKey(Key::mute), nullptr);
    EXPECT_EQ(specialKey(Key::volumeUp), nullptr);
    EXPECT_EQ(specialKey(Key::command), nullptr);
    EXPECT_EQ(specialKey(Key::a), nullptr);
}

class GermanTexts : public Texts {
public:
    std::string text(std::string_view key) const override { return key == "space_key" ? "Leertaste" : Texts::text(key); }
};

TEST(SpecialKey, ShowsTheTranslatedTextOfTheSpaceKey)
{
    EXPECT_EQ(specialKey(Key::space)->presentableDescription(GermanTexts()), "Leertaste");
    EXPECT_EQ(specialKey(Key::tab)->presentableDescription(GermanTexts()), "⇥");
}

TEST(Texts, ShowsTheKeyOfATextThatIsMissing) { EXPECT_EQ(Texts().text("no_such_key"), "no_such_key"); }

}  // namespace
}  // namespace KeyboardShortcuts

// What every keyboard layout promises, asked of the fake and of a real server's.
#include <gtest/gtest.h>

#include "Platform/X11/Keys/X11KeyboardLayout.h"
#include "Support/FakeKeyboardLayout.h"
#include "Support/PrivateServer.h"
#include "Support/XTestKeyboard.h"

namespace Contracts {
namespace {

constexpr std::uint16_t keyZ = 6;
constexpr std::uint16_t keyY = 16;

class FakeKeyboard {
public:
    Platform::KeyboardLayout& layout() { return m_layout; }
    void changeToGerman()
    {
        m_layout.setText(keyZ, "y");
        m_layout.setText(keyY, "z");
    }

private:
    TestSupport::CallLog m_log;
    TestSupport::FakeKeyboardLayout m_layout{m_log};
};

class RealKeyboard {
public:
    RealKeyboard() { m_keyboard.setLayout("us"); }
    Platform::KeyboardLayout& layout() { return m_layout; }
    void changeToGerman() { m_keyboard.setLayout("de"); }

private:
    TestSupport::PrivateServer m_server;
    TestSupport::XTestKeyboard m_keyboard{m_server.displayName()};
    Platform::X11::X11KeyboardLayout m_layout{m_server.displayName()};
};

template <typename Keyboard> class KeyboardLayoutContract : public testing::Test {
protected:
    std::optional<std::string> textOf(std::uint16_t key) { return keyboard.layout().displayText(key); }

    Keyboard keyboard;
};

using Keyboards = testing::Types<FakeKeyboard, RealKeyboard>;
TYPED_TEST_SUITE(KeyboardLayoutContract, Keyboards);

TYPED_TEST(KeyboardLayoutContract, TellsWhatTheKeysOfAnAmericanKeyboardType)
{
    // By key code from 0; a blank for the key beside the left Shift, which that keyboard has
    // not, and for Return.
    const std::string typed = "asdfhgzxcv bqweryt123465=97-80]ou[ip lj'k;\\,/nm.";
    for (std::size_t key = 0; key < typed.size(); ++key) {
        if (typed[key] != ' ') {
            EXPECT_EQ(this->textOf(static_cast<std::uint16_t>(key)), std::string(1, typed[key])) << key;
        }
    }
    EXPECT_EQ(this->textOf(50), "`");
}

TYPED_TEST(KeyboardLayoutContract, HasNoTextForKeysThatTypeNothing)
{
    for (const auto key : std::initializer_list<std::uint16_t>{36, 48, 51, 53, 56, 63, 122, 123, 126})
        EXPECT_EQ(this->textOf(key), std::nullopt) << key;
}

TYPED_TEST(KeyboardLayoutContract, HasNoTextForKeysThatDoNotExist)
{
    for (const auto key : std::initializer_list<std::uint16_t>{128, 999, 65535})
        EXPECT_EQ(this->textOf(key), std::nullopt) << key;
}

TYPED_TEST(KeyboardLayoutContract, TellsWhatAKeyTypesNow)
{
    EXPECT_EQ(this->textOf(keyZ), "z");
    this->keyboard.changeToGerman();
    EXPECT_EQ(this->textOf(keyZ), "y");
    EXPECT_EQ(this->textOf(keyY), "z");
}

}  // namespace
}  // namespace Contracts

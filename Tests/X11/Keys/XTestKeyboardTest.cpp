#include "Support/XTestKeyboard.h"

#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include "Platform/X11/Connection.h"
#include "Platform/X11/Keys/XkbProtocol.h"
#include "Support/PrivateServer.h"
#include "Support/WaitUntil.h"

using Platform::X11::adopt;
using Platform::X11::Connection;

namespace {

class XTestKeyboardTest : public testing::Test {
protected:
    bool isDown(std::uint8_t keycode)
    {
        const auto keymap = adopt(xcb_query_keymap_reply(*m_connection, xcb_query_keymap(*m_connection), nullptr));
        return (keymap->keys[keycode / 8] >> (keycode % 8) & 1) != 0;
    }

    Platform::X11::Reply<xcb_xkb_get_state_reply_t> state()
    {
        adopt(xcb_xkb_use_extension_reply(*m_connection, xcb_xkb_use_extension(*m_connection, 1, 0), nullptr));
        return adopt(xcb_xkb_get_state_reply(*m_connection, xcb_xkb_get_state(*m_connection, XCB_XKB_ID_USE_CORE_KBD), nullptr));
    }

    TestSupport::PrivateServer m_server;
    std::unique_ptr<Connection> m_connection = Connection::open(m_server.displayName());
};

}  // namespace

TEST_F(XTestKeyboardTest, HoldsKeysUntilTheyAreReleased)
{
    TestSupport::XTestKeyboard keyboard(m_server.displayName());
    keyboard.press(KEY_A);
    EXPECT_TRUE(isDown(38));
    keyboard.release(KEY_A);
    EXPECT_FALSE(isDown(38));
}

TEST_F(XTestKeyboardTest, ReleasesWhatIsHeldAtItsEnd)
{
    {
        TestSupport::XTestKeyboard keyboard(m_server.displayName());
        keyboard.press(KEY_A);
    }
    EXPECT_FALSE(isDown(38));
}

TEST_F(XTestKeyboardTest, CountsAutoRepeats)
{
    TestSupport::XTestKeyboard keyboard(m_server.displayName());
    keyboard.repeatQuickly();
    keyboard.press(KEY_A);
    EXPECT_TRUE(TestSupport::waitUntil([&] { return keyboard.repeats() >= 3; }));
    keyboard.release(KEY_A);
    const auto repeats = keyboard.repeats();
    keyboard.tap(KEY_B);
    EXPECT_EQ(keyboard.repeats(), repeats);
}

TEST_F(XTestKeyboardTest, LocksGroupsAndModifiers)
{
    TestSupport::XTestKeyboard keyboard(m_server.displayName());
    keyboard.setLayout("us,ru");
    keyboard.lockGroup(1);
    keyboard.lockModifiers(XCB_MOD_MASK_LOCK);
    EXPECT_EQ(state()->group, 1);
    EXPECT_EQ(state()->mods, XCB_MOD_MASK_LOCK);
    keyboard.lockGroup(0);
    keyboard.lockModifiers(0);
    EXPECT_EQ(state()->group, 0);
    EXPECT_EQ(state()->mods, 0);
}

// The crosshair's shortcut under the keyboard's states, and when another program has it.
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include "EndToEnd/CrosshairScene.h"
#include "Support/Desktop/ForeignHotKey.h"
#include "Support/WaitUntil.h"

using namespace TestSupport;

namespace {

constexpr std::uint16_t superAndAlt = XCB_MOD_MASK_4 | XCB_MOD_MASK_1;

struct Shortcut : testing::Test {
    CrosshairScene scene{WindowManagerKind::openbox};

    void expectThatItShowsAndDismisses()
    {
        scene.pressShortcut();
        EXPECT_TRUE(scene.showsCrosshairAt(300, 300));
        scene.pressShortcut();
        EXPECT_TRUE(scene.showsNoCrosshair());
    }
};

TEST_F(Shortcut, WorksWithNumLock)
{
    scene.desktop().keyboard().lockModifiers(XCB_MOD_MASK_2);
    expectThatItShowsAndDismisses();
}

TEST_F(Shortcut, WorksWithCapsLock)
{
    scene.desktop().keyboard().lockModifiers(XCB_MOD_MASK_LOCK);
    expectThatItShowsAndDismisses();
}

TEST_F(Shortcut, WorksWithBothLocks)
{
    scene.desktop().keyboard().lockModifiers(XCB_MOD_MASK_2 | XCB_MOD_MASK_LOCK);
    expectThatItShowsAndDismisses();
}

TEST_F(Shortcut, WorksInTheSecondLayoutGroup)
{
    scene.desktop().keyboard().setLayout("us,ru");
    scene.desktop().keyboard().lockGroup(1);
    expectThatItShowsAndDismisses();
}

TEST_F(Shortcut, WorksAfterTheLayoutChanged)
{
    scene.desktop().keyboard().setLayout("fr");
    expectThatItShowsAndDismisses();
}

TEST_F(Shortcut, DoesNothingWithAFurtherModifier)
{
    scene.desktop().keyboard().chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_LEFTSHIFT, KEY_X});
    scene.desktop().keyboard().chord({KEY_LEFTMETA, KEY_X});
    scene.pressShortcut();
    EXPECT_TRUE(scene.showsCrosshairAt(300, 300));
}

TEST_F(Shortcut, TogglesOnceHoweverLongItIsHeld)
{
    auto& keyboard = scene.desktop().keyboard();
    constexpr std::uint16_t keys[] = {KEY_LEFTMETA, KEY_LEFTALT, KEY_X};
    for (const auto key : keys)
        keyboard.press(key);
    EXPECT_TRUE(scene.showsCrosshairAt(300, 300));
    // The server repeats a held key after 500 ms, some 25 times a second.
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(900);
    EXPECT_FALSE(waitUntil([&] { return scene.desktop().screenshot() == scene.beneath(); }, std::chrono::milliseconds(900)));
    EXPECT_GE(std::chrono::steady_clock::now(), end);
    for (const auto key : keys)
        keyboard.release(key);
    EXPECT_TRUE(scene.showsCrosshairAt(300, 300));
}

TEST(ShortcutOfAnotherProgram, IsReportedOnStandardOutput)
{
    Desktop desktop(WindowManagerKind::none);
    const ForeignHotKey holder(desktop.displayName(), KEY_X, superAndAlt);
    const TarnwickProgram program(desktop);
    EXPECT_TRUE(waitUntil([&] { return program.standardOutput().ends_with('\n'); }));
    EXPECT_EQ(program.standardOutput(), "Error registering hotkey ⌥⌘X: -9878\n");
}

TEST(ShortcutOfAnotherProgram, StaysWithThatProgram)
{
    Desktop desktop(WindowManagerKind::none);
    ForeignHotKey holder(desktop.displayName(), KEY_X, superAndAlt);
    TarnwickProgram program(desktop);
    ASSERT_TRUE(waitUntil([&] { return program.standardOutput().ends_with('\n'); }));
    desktop.keyboard().chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_X});
    EXPECT_EQ(holder.takePresses(), 1);
    EXPECT_TRUE(program.process().isRunning());
}

}  // namespace

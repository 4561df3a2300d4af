// With no overlay up the program sleeps.
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <thread>

#include "EndToEnd/CrosshairScene.h"
#include "Support/WaitUntil.h"

using namespace TestSupport;

namespace {

// Seconds to watch; a minute is asked for by TARNWICK_IDLE_SECONDS=60.
std::chrono::seconds timeToWatch()
{
    const char* seconds = std::getenv("TARNWICK_IDLE_SECONDS");
    return std::chrono::seconds(seconds != nullptr ? std::atoi(seconds) : 3);
}

struct Idle : testing::Test {
    CrosshairScene scene{WindowManagerKind::openbox};

    // After what goes on has come to an end.
    long wakeUpsWhileWatching()
    {
        long former = -1;
        EXPECT_TRUE(waitUntil([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(500));
            return std::exchange(former, scene.program().voluntaryContextSwitches()) == former;
        }));
        const auto before = scene.program().voluntaryContextSwitches();
        std::this_thread::sleep_for(timeToWatch());
        return scene.program().voluntaryContextSwitches() - before;
    }
};

TEST_F(Idle, NeverWakesUpBeforeTheFirstOverlay) { EXPECT_EQ(wakeUpsWhileWatching(), 0); }

TEST_F(Idle, NeverWakesUpAfterTheLastOverlayWent)
{
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsCrosshairAt(300, 300));
    const auto before = scene.program().voluntaryContextSwitches();
    EXPECT_TRUE(waitUntil([&] { return scene.program().voluntaryContextSwitches() > before + 60; }));  // the measure can see the pump
    scene.pressEscape();
    ASSERT_TRUE(scene.showsNoCrosshair());
    EXPECT_EQ(wakeUpsWhileWatching(), 0);
}

TEST_F(Idle, NeverWakesUpForWhatOtherWindowsDo)
{
    scene.desktop().keyboard().tap(KEY_A);  // the first key of another keyboard tells everybody about that
    EXPECT_EQ(wakeUpsWhileWatching(), 0);
    const auto before = scene.program().voluntaryContextSwitches();
    for (int i = 0; i < 50; ++i) {
        TestWindow window(scene.desktop().displayName(), "passing", {10, 10, 100, 100}, 3);
        window.activate();
        scene.desktop().keyboard().tap(KEY_A);
        scene.desktop().pointer().moveTo(300 + i, 300);
    }
    EXPECT_EQ(wakeUpsWhileWatching(), 0);
    EXPECT_EQ(scene.program().voluntaryContextSwitches() - before, 0);
}

// More than a megabyte of resident memory.
TEST_F(Idle, HasNotLoadedWhatOnlyARecorderOfShortcutsNeeds)
{
    std::ifstream maps("/proc/" + std::to_string(scene.program().process().pid()) + "/maps");
    const std::string loaded{std::istreambuf_iterator<char>(maps), {}};
    EXPECT_NE(loaded.find("libQt6Core"), std::string::npos);
    EXPECT_EQ(loaded.find("libgio"), std::string::npos);
    EXPECT_EQ(loaded.find("tarnwick-desktop-shortcuts"), std::string::npos);
}

}  // namespace

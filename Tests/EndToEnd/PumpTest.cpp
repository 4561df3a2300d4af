// What a tick costs while an overlay is up, counted.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "EndToEnd/CrosshairScene.h"

using namespace TestSupport;
using namespace std::chrono_literals;

namespace {

// It waits for the timer, for the pointer's place and for the pictures. What the server tells
// of the lines' own moves must not wake it up in between.
TEST(Pump, LetsTheMainThreadSleepThreeTimesATickWhileThePointerMoves)
{
    constexpr auto length = 2s;
    constexpr int mostTicks = 2 * 60 + 1;
    constexpr int some = 20;  // waits for a server that is slow to take a request

    CrosshairScene scene(WindowManagerKind::openbox);
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsCrosshairAt(300, 300));
    const auto before = scene.program().sleepsOfMainThread();
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; std::chrono::steady_clock::now() - start < length; ++i) {
        scene.desktop().pointer().moveTo(300 + i % 200, 300 + i % 150);
        std::this_thread::sleep_for(8ms);
    }
    const auto sleeps = scene.program().sleepsOfMainThread() - before;
    EXPECT_GT(sleeps, 60);  // the measure can see the pump
    EXPECT_LE(sleeps, 3 * mostTicks + some);
}

}  // namespace

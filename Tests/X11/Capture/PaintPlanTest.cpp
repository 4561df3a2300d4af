#include "Platform/X11/Capture/PaintPlan.h"

#include <gtest/gtest.h>

namespace CaptureTests {
namespace {

using namespace Platform::X11;

constexpr xcb_window_t low = 0x400001;
constexpr xcb_window_t middle = 0x400002;
constexpr xcb_window_t high = 0x400003;

class PaintPlan : public testing::Test {
protected:
    void SetUp() override { m_model.setRootSize(100, 100); }

    ToplevelWindow& add(xcb_window_t id, const DeviceRect& frame, std::uint8_t depth = 24)
    {
        auto& window = *m_model.add(id);
        m_model.setGeometry(window, frame, 0);
        m_model.setMapped(window, true);
        window.depth = depth;
        window.needsAttributes = window.needsShape = window.needsOpacity = false;
        return *m_model.find(id);
    }

    struct Part {
        xcb_window_t window;
        DeviceRect area;
        friend bool operator==(const Part&, const Part&) = default;
    };
    std::vector<Part> plan(const DeviceRect& area, bool blends = true)
    {
        m_steps.clear();
        BelowOverlay below;
        lookBelow(m_number, m_entries, m_model, below);
        m_planner.plan(m_model, below, blends, area, m_steps);
        std::vector<Part> parts;
        for (const auto& step : m_steps)
            parts.push_back({step.window, step.area});
        return parts;
    }
    using Parts = std::vector<Part>;

    StackModel m_model{{0x1e0, 0x200000, 0x1fffff, 0, 0, {}}};
    PaintPlanner m_planner;
    std::uint32_t m_number = 1;
    std::vector<OverlayEntry> m_entries;
    std::vector<PaintStep> m_steps;
};

TEST_F(PaintPlan, StopsAtAnOpaqueWindowThatCoversEverything)
{
    add(low, {0, 0, 100, 100});
    add(middle, {10, 0, 50, 50});
    EXPECT_EQ(plan({20, 5, 10, 1}), (Parts{{middle, {20, 5, 10, 1}}}));
    EXPECT_EQ(m_steps[0].source, (DevicePoint{10, 5}));
}

TEST_F(PaintPlan, FillsTheRestFromBelow)
{
    add(low, {0, 0, 30, 100});
    add(middle, {10, 0, 10, 50});
    EXPECT_EQ(plan({0, 5, 40, 1}), (Parts{{middle, {10, 5, 10, 1}}, {low, {0, 5, 10, 1}}, {low, {20, 5, 10, 1}}, {XCB_WINDOW_NONE, {30, 5, 10, 1}}}));
}

TEST_F(PaintPlan, BelievesTheScreenWithoutACompositorWhereNothingHidesIt)
{
    add(low, {0, 0, 45, 100});
    add(middle, {40, 0, 10, 100});
    add(high, {60, 0, 5, 100});
    m_entries = {{1, {{middle, {40, 0, 10, 100}}}, XCB_WINDOW_NONE}};

    EXPECT_EQ(plan({0, 5, 100, 1}, false),
        (Parts{{XCB_WINDOW_NONE, {0, 5, 40, 1}}, {XCB_WINDOW_NONE, {50, 5, 10, 1}}, {XCB_WINDOW_NONE, {65, 5, 35, 1}}, {low, {40, 5, 5, 1}},
            {XCB_WINDOW_NONE, {45, 5, 5, 1}}, {XCB_WINDOW_NONE, {60, 5, 5, 1}}}));
    const auto isOnScreen = [&](std::size_t i) { return m_steps[i].isOnScreen; };
    EXPECT_TRUE(isOnScreen(0) && isOnScreen(1) && isOnScreen(2));
    EXPECT_FALSE(isOnScreen(3) || isOnScreen(4) || isOnScreen(5));
}

TEST_F(PaintPlan, BelievesNothingOfTheScreenUnderACompositor)
{
    add(low, {0, 0, 10, 100});
    EXPECT_EQ(plan({0, 5, 100, 1}, true), (Parts{{low, {0, 5, 10, 1}}, {XCB_WINDOW_NONE, {10, 5, 90, 1}}}));
    EXPECT_FALSE(m_steps[0].isOnScreen || m_steps[1].isOnScreen);
}

TEST_F(PaintPlan, TakesAWindowOfUnknownKindForOneThatHidesTheScreen)
{
    add(low, {0, 0, 100, 100});
    add(middle, {0, 0, 5, 100});
    add(high, {0, 0, 10, 100}).needsAttributes = true;
    m_entries = {{1, {{middle, {0, 0, 5, 100}}}, XCB_WINDOW_NONE}};
    EXPECT_EQ(plan({0, 5, 20, 1}, false), (Parts{{XCB_WINDOW_NONE, {10, 5, 10, 1}}, {low, {0, 5, 5, 1}}, {low, {5, 5, 5, 1}}}));
}

TEST_F(PaintPlan, LooksThroughBlendedWindowsWithACompositorOnly)
{
    add(low, {0, 0, 100, 100});
    add(middle, {0, 0, 100, 100}, 32);
    add(high, {0, 0, 100, 100});
    m_entries = {{1, {{high, {0, 0, 100, 100}}}, XCB_WINDOW_NONE}};
    EXPECT_EQ(plan({0, 5, 10, 1}, true), (Parts{{middle, {0, 5, 10, 1}}, {low, {0, 5, 10, 1}}}));
    EXPECT_TRUE(m_steps[0].isBlended);
    EXPECT_FALSE(m_steps[1].isBlended);
    EXPECT_EQ(plan({0, 5, 10, 1}, false), (Parts{{middle, {0, 5, 10, 1}}}));
    EXPECT_FALSE(m_steps[0].isBlended);
}

TEST_F(PaintPlan, TakesTheOpacityWithACompositorOnly)
{
    add(low, {0, 0, 100, 100}).opacity = 0x80808080;
    add(high, {0, 0, 100, 100});
    m_entries = {{1, {{high, {0, 0, 100, 100}}}, XCB_WINDOW_NONE}};
    plan({0, 5, 10, 1}, true);
    EXPECT_EQ(m_steps[0].alpha, 0x80);
    EXPECT_TRUE(m_steps[0].isBlended);
    plan({0, 5, 10, 1}, false);
    EXPECT_EQ(m_steps[0].alpha, 0xff);
}

TEST_F(PaintPlan, CutsTheOpacityToEightBitsWithoutRounding)
{
    auto& window = add(low, {0, 0, 100, 100});
    const auto alphaOf = [&](std::uint32_t opacity) {
        window.opacity = opacity;
        plan({0, 5, 10, 1}, true);
        return int{m_steps[0].alpha};
    };
    EXPECT_EQ(alphaOf(0x80000000), 127);
    EXPECT_EQ(alphaOf(0x80808080), 128);
    EXPECT_EQ(alphaOf(0xfffffffe), 254);
    EXPECT_EQ(alphaOf(0xffffffff), 255);
    EXPECT_EQ(alphaOf(0x01010100), 0);
}

TEST_F(PaintPlan, IsAnotherOneWithAnotherRootBackground)
{
    plan({0, 5, 10, 1});
    const auto former = m_steps;
    plan({0, 5, 10, 1});
    EXPECT_EQ(m_steps, former);
    m_model.countRootBackground();
    plan({0, 5, 10, 1});
    EXPECT_NE(m_steps, former);
}

TEST_F(PaintPlan, KeepsToTheShapeOfAWindow)
{
    auto& window = add(low, {10, 10, 40, 40});
    window.isShaped = true;
    window.shape = {{0, 0, 5, 40}, {20, 0, 100, 40}};
    EXPECT_EQ(plan({0, 20, 100, 1}),
        (Parts{{low, {10, 20, 5, 1}}, {low, {30, 20, 20, 1}}, {0, {0, 20, 10, 1}}, {0, {15, 20, 15, 1}}, {0, {50, 20, 50, 1}}}));
}

TEST_F(PaintPlan, ReckonsShapesFromInsideTheBorder)
{
    auto& window = add(low, {10, 10, 40, 40});
    window.border = 3;
    window.isShaped = true;
    window.shape = {{-3, 0, 4, 30}};
    plan({0, 20, 100, 1});
    EXPECT_EQ(m_steps[0].area, (DeviceRect{10, 20, 4, 1}));
    EXPECT_EQ(m_steps[0].source, (DevicePoint{0, 10}));
}

TEST_F(PaintPlan, SkipsWindowsWithoutPixels)
{
    add(low, {0, 0, 100, 100}).isInputOnly = true;
    m_model.setMapped(add(middle, {0, 0, 100, 100}), false);
    add(high, {0, 0, 100, 100}).needsAttributes = true;
    EXPECT_EQ(plan({0, 5, 10, 1}), (Parts{{XCB_WINDOW_NONE, {0, 5, 10, 1}}}));
}

TEST_F(PaintPlan, LeavesOutTheOverlayAndWhatLiesAboveIt)
{
    add(low, {0, 0, 100, 100});
    add(middle, {0, 0, 100, 100});
    add(high, {0, 0, 100, 100});
    m_entries = {{1, {{middle, {0, 0, 100, 100}}}, XCB_WINDOW_NONE}};
    EXPECT_EQ(plan({0, 5, 10, 1}), (Parts{{low, {0, 5, 10, 1}}}));
}

TEST_F(PaintPlan, LeavesOutHigherOverlaysThatLieBelowInTheStack)
{
    add(low, {0, 0, 100, 100});
    add(middle, {0, 0, 100, 100});
    m_entries = {{1, {{0x400009, {}}}, XCB_WINDOW_NONE}, {2, {{middle, {0, 0, 100, 100}}}, XCB_WINDOW_NONE}};
    EXPECT_EQ(plan({0, 5, 10, 1}), (Parts{{low, {0, 5, 10, 1}}}));
}

TEST_F(PaintPlan, SeesEverythingForAnUnknownNumber)
{
    add(low, {0, 0, 100, 100});
    m_entries = {{1, {{low, {0, 0, 100, 100}}}, XCB_WINDOW_NONE}};
    m_number = 5;
    EXPECT_EQ(plan({0, 5, 10, 1}), (Parts{{low, {0, 5, 10, 1}}}));
}

TEST_F(PaintPlan, KeepsToTheScreen)
{
    add(low, {-50, -50, 300, 300});
    EXPECT_EQ(plan({-10, 5, 200, 1}), (Parts{{low, {0, 5, 100, 1}}}));
    EXPECT_EQ(m_steps[0].source, (DevicePoint{50, 55}));
}

}  // namespace
}  // namespace CaptureTests

#include "Platform/X11/Capture/ScreenTruth.h"

#include <gtest/gtest.h>

namespace CaptureTests {
namespace {

using namespace Platform::X11;
using namespace std::chrono_literals;

constexpr xcb_window_t strip = 0x600001;
constexpr std::uint32_t number = 1;

class ScreenTruth : public testing::Test {
protected:
    std::vector<OverlayEntry> overlayAt(const DeviceRect& frame) { return {{number, {{strip, frame}}, XCB_WINDOW_NONE}}; }

    std::vector<DeviceRect> covered(const DeviceRect& area)
    {
        Region region;
        m_truth.findCovered(area, m_model, m_below, region);
        return {region.rects().begin(), region.rects().end()};
    }
    std::vector<std::uint32_t> merge(const std::vector<DeviceRect>& parts, std::vector<std::uint32_t> composed, std::vector<std::uint32_t> screen)
    {
        Region region;
        for (const auto& part : parts)
            region.add(part);
        const auto picture = m_truth.merge(number, {0, 0, 3, 1}, region, composed, screen);
        return {picture.begin(), picture.end()};
    }
    using Rects = std::vector<DeviceRect>;
    using Pixels = std::vector<std::uint32_t>;

    Platform::X11::ScreenTruth m_truth;
    StackModel m_model{{0x1e0, 0x200000, 0x1fffff, 0, 0, {}}};
    BelowOverlay m_below{0, {strip}};
    CoverHistory::Time m_start{};
    const DeviceRect m_area{0, 0, 3, 1};
};

TEST_F(ScreenTruth, CountsLeftPlacesAsCoveredForAMoment)
{
    m_truth.update(overlayAt({0, 0, 1, 1}), 0, m_start);
    m_truth.update(overlayAt({2, 0, 1, 1}), 0, m_start + 100ms);
    EXPECT_EQ(covered(m_area), (Rects{{0, 0, 1, 1}, {2, 0, 1, 1}}));
    m_truth.update(overlayAt({2, 0, 1, 1}), 0, m_start + 300ms);
    EXPECT_EQ(covered(m_area), (Rects{{0, 0, 1, 1}, {2, 0, 1, 1}}));
    m_truth.update(overlayAt({2, 0, 1, 1}), 0, m_start + 301ms);
    EXPECT_EQ(covered(m_area), (Rects{{2, 0, 1, 1}}));
}

TEST_F(ScreenTruth, RemembersAnOverlayThatIsGone)
{
    m_truth.update(overlayAt({0, 0, 1, 1}), 0, m_start);
    m_truth.update({}, 0, m_start + 200ms);
    m_below = {};
    EXPECT_EQ(covered(m_area), (Rects{{0, 0, 1, 1}}));
}

TEST_F(ScreenTruth, SeesAnOverlayThatIsPartOfTheCaptureOnTheScreen)
{
    m_truth.update(overlayAt({0, 0, 1, 1}), 0, m_start);
    m_below = {};
    EXPECT_EQ(covered(m_area), Rects{});
}

TEST_F(ScreenTruth, CountsForeignWindowsAboveTheOverlayAsCovering)
{
    auto& window = *m_model.add(0x800001);
    m_model.setGeometry(window, {1, 0, 1, 1}, 0);
    m_model.setMapped(window, true);
    window.needsAttributes = false;
    EXPECT_EQ(covered(m_area), (Rects{{1, 0, 1, 1}}));
}

TEST_F(ScreenTruth, BelievesNoScreenThatACompositorHasJustTakenOver)
{
    m_truth.update({}, 1, m_start);
    EXPECT_EQ(covered(m_area), (Rects{m_area}));
    m_truth.update({}, 1, m_start + 301ms);
    EXPECT_EQ(covered(m_area), Rects{});
}

TEST_F(ScreenTruth, TakesUncoveredPixelsFromTheScreen) { EXPECT_EQ(merge({}, {1, 2, 3}, {0xff000011, 0x22, 0x33}), (Pixels{0x11, 0x22, 0x33})); }

TEST_F(ScreenTruth, KeepsTheLastTruthWhereCovered)
{
    merge({}, {1, 2, 3}, {0x11, 0x22, 0x33});
    EXPECT_EQ(merge({{1, 0, 1, 1}}, {1, 2, 3}, {0x44, 0x55, 0x66}), (Pixels{0x44, 0x22, 0x66}));
    // And on, from answer to answer.
    EXPECT_EQ(merge({m_area}, {1, 2, 3}, {}), (Pixels{0x44, 0x22, 0x66}));
}

TEST_F(ScreenTruth, TakesTheComposedValueWhereItHasChanged)
{
    merge({}, {1, 2, 3}, {0x11, 0x22, 0x33});
    EXPECT_EQ(merge({m_area}, {1, 7, 3}, {}), (Pixels{0x11, 7, 0x33}));
}

TEST_F(ScreenTruth, TakesTheComposedValueWhereNothingElseIsKnown)
{
    EXPECT_EQ(merge({{0, 0, 2, 1}}, {0xff000001, 2, 3}, {0x11, 0x22, 0x33}), (Pixels{1, 2, 0x33}));
}

TEST_F(ScreenTruth, ForgetsWhenACompositorComesOrGoes)
{
    merge({}, {1, 2, 3}, {0x11, 0x22, 0x33});
    m_truth.update({}, 1, m_start);
    EXPECT_EQ(merge({m_area}, {1, 2, 3}, {}), (Pixels{1, 2, 3}));
}

TEST(TruthMemory, FindsTheTruthInPicturesOfOtherPlacesThatOverlap)
{
    Platform::X11::TruthMemory memory;
    const std::vector<std::uint32_t> columnComposed = {1, 2, 3};
    const std::vector<std::uint32_t> columnTruth = {0x11, 0x22, 0x33};
    memory.remember(number, {5, 0, 1, 3}, columnComposed, columnTruth);
    Region covered;
    covered.add({5, 1, 1, 1});
    std::vector<std::uint32_t> row = {7, 7, 7};
    memory.recover(number, {4, 1, 3, 1}, covered, std::vector<std::uint32_t>{9, 2, 9}, row);
    EXPECT_EQ(row, (std::vector<std::uint32_t>{7, 0x22, 7}));
    // Another overlay sees other windows below it.
    memory.recover(number + 1, {4, 1, 3, 1}, covered, std::vector<std::uint32_t>{9, 2, 9}, row);
    EXPECT_EQ(row, (std::vector<std::uint32_t>{7, 2, 7}));
}

TEST(TruthMemory, KeepsTheNewestPictures)
{
    Platform::X11::TruthMemory memory;
    const std::vector<std::uint32_t> composed = {1};
    for (int i = 0; i < 100; ++i)
        memory.remember(number, {i, 0, 1, 1}, composed, std::vector<std::uint32_t>{static_cast<std::uint32_t>(i + 1000)});
    const auto recovered = [&](int x) {
        Region covered;
        covered.add({x, 0, 1, 1});
        std::vector<std::uint32_t> pixel = {0};
        memory.recover(number, {x, 0, 1, 1}, covered, composed, pixel);
        return pixel[0];
    };
    EXPECT_EQ(recovered(99), 1099U);
    EXPECT_EQ(recovered(36), 1036U);
    EXPECT_EQ(recovered(35), 1U);
}

TEST(TruthMemory, BoundsItsMemory)
{
    Platform::X11::TruthMemory memory;
    const std::vector<std::uint32_t> pixels(300UL * 300, 5);
    const std::vector<std::uint32_t> truth(300UL * 300, 6);
    for (int i = 0; i < 40; ++i)
        memory.remember(number, {i * 300, 0, 300, 300}, pixels, truth);
    EXPECT_LE(memory.valueCount(), 2U << 20);
    const std::vector<std::uint32_t> screenful(1200UL * 1000, 5);
    memory.remember(number, {0, 0, 1200, 1000}, screenful, screenful);
    EXPECT_LE(memory.valueCount(), 2U << 20);
}

}  // namespace
}  // namespace CaptureTests

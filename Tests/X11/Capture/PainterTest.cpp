#include "X11/Capture/PainterFixture.h"

namespace CaptureTests {
namespace {

using namespace Platform::X11;

class Painter : public PainterFixture {
protected:
    static PaintStep withAlpha(PaintStep step, std::uint8_t alpha)
    {
        step.alpha = alpha;
        step.isBlended = alpha != 0xff;
        return step;
    }

    // Of the first pixel, once errors have come in.
    std::uint32_t paint(const std::vector<PaintStep>& steps)
    {
        m_desktop.sync();
        const auto& area = steps[0].area;
        m_images.begin(static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height));
        const auto picture = paint(steps, area);
        EXPECT_TRUE(m_images.read());
        takeEvents();
        return m_images.pixels(picture)[0] & 0xffffff;
    }

    // The number of the picture.
    std::size_t paint(std::span<const PaintStep> steps, const DeviceRect& area)
    {
        std::size_t number = 0;
        auto& canvas = m_images.addCanvas(area, number);
        m_painter.paint(steps, area, m_root, canvas);
        return number;
    }

    void takeEvents()
    {
        while (const auto event = Event(xcb_poll_for_event(m_c))) {
            if (event->response_type == 0)
                m_painter.failed(reinterpret_cast<const xcb_generic_error_t&>(*event));
            else
                ++m_eventCount;
        }
    }

    RootLook m_root{m_desktop.screen(), 1, false, XCB_NONE};
    int m_eventCount = 0;
};

TEST_F(Painter, PaintsTheFirstStepAboveTheOthers)
{
    const auto red = window(0xff0000);
    const auto blue = window(0x0000ff);
    EXPECT_EQ(paint({stepFor(red), stepFor(blue)}), 0xff0000U);
    EXPECT_EQ(paint({stepFor(blue), stepFor(red)}), 0x0000ffU);
}

TEST_F(Painter, BlendsByTheOpacityOfTheMoment)
{
    const auto red = window(0xff0000);
    const auto blue = window(0x0000ff);
    EXPECT_EQ(paint({withAlpha(stepFor(red), 0xc0), stepFor(blue)}), 0xc0003fU);
    EXPECT_EQ(paint({withAlpha(stepFor(red), 0x40), stepFor(blue)}), 0x4000bfU);
    EXPECT_EQ(paint({withAlpha(stepFor(red), 0x00), stepFor(blue)}), 0x0000ffU);
    EXPECT_EQ(paint({withAlpha(stepFor(red), 0xff), stepFor(blue)}), 0xff0000U);
    EXPECT_EQ(paint({withAlpha(stepFor(red), 0xfe), stepFor(blue)}), 0xfe0001U);
}

TEST_F(Painter, PaintsAreasOfOneSizeSideBySide)
{
    const auto red = stepFor(window(0xff0000));
    const auto blue = stepFor(window(0x0000ff));
    m_desktop.sync();
    for (int i = 0; i < 2; ++i) {
        m_images.begin(200);
        const auto first = paint({&red, 1}, red.area);
        const auto second = paint({&blue, 1}, blue.area);
        ASSERT_TRUE(m_images.read());
        EXPECT_EQ(m_images.pixels(first)[99] & 0xffffff, 0xff0000U);
        EXPECT_EQ(m_images.pixels(second)[0] & 0xffffff, 0x0000ffU);
    }
}

TEST_F(Painter, TellsWhichWindowsCouldNotBePaintedAndTriesThemAgain)
{
    const auto shown = stepFor(window(0xff0000));
    const auto hidden = m_desktop.makeWindow({.inner = {0, 0, 10, 10}, .colour = 0x0000ff});
    const auto step = stepFor(hidden);
    paint({shown, step});
    EXPECT_FALSE(m_painter.hasFailed({&shown, 1}));
    EXPECT_TRUE(m_painter.hasFailed({&step, 1}));
    EXPECT_TRUE(m_painter.hasFailed(std::vector<PaintStep>{shown, step}));
    m_desktop.map(hidden);
    EXPECT_EQ(paint({step, shown}), 0x0000ffU);
    EXPECT_FALSE(m_painter.hasFailed(std::vector<PaintStep>{shown, step}));
}

TEST_F(Painter, NamesThePixmapAnewForNewContents)
{
    const auto id = window(0xff0000);
    auto step = stepFor(id, {0, 0, 20, 10});
    EXPECT_EQ(paint({step}), 0xff0000U);
    // From now on its pixmap is another one.
    m_desktop.resize(id, 20, 10);
    Image green(1, 1);
    green.pixels()[0] = 0x00ff00;
    m_desktop.setPatternBackground(id, green, false);
    step.contents = 2;
    EXPECT_EQ(paint({step}), 0x00ff00U);
}

// What a compositor shows of the root.
class PaintedWallpaper : public Painter {
protected:
    // Of 7 by 5 pixels, of which each has a colour of its own.
    PaintedWallpaper()
    {
        m_root.hasCompositor = true;
        m_root.wallpaper = m_c.newId();
        xcb_create_pixmap(m_c, m_c.screen().root_depth, m_root.wallpaper, m_c.root(), tileWidth, tileHeight);
        m_c.waitForServer();
        for (int y = 0; y < tileHeight; ++y) {
            for (int x = 0; x < tileWidth; ++x)
                m_desktop.fill(m_root.wallpaper, {x, y, 1, 1}, colourAt(x, y));
        }
        m_desktop.sync();
    }

    static std::uint32_t colourAt(int x, int y) { return static_cast<std::uint32_t>(0x100 * (x % tileWidth + 1) + y % tileHeight + 1); }

    std::vector<std::uint32_t> paintRoot(const DeviceRect& area, const DeviceRect& part)
    {
        PaintStep step;
        step.area = part;
        m_images.begin(static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height));
        const auto picture = Painter::paint({&step, 1}, area);
        EXPECT_TRUE(m_images.read());
        takeEvents();
        std::vector<std::uint32_t> colours;
        for (const auto pixel : m_images.pixels(picture))
            colours.push_back(pixel & 0xffffff);
        return colours;
    }
    std::vector<std::uint32_t> paintRoot(const DeviceRect& area) { return paintRoot(area, area); }

    static std::vector<std::uint32_t> tiled(const DeviceRect& area)
    {
        std::vector<std::uint32_t> colours;
        for (int y = area.y; y < area.bottom(); ++y) {
            for (int x = area.x; x < area.right(); ++x)
                colours.push_back(colourAt(x, y));
        }
        return colours;
    }

    static constexpr int tileWidth = 7;
    static constexpr int tileHeight = 5;
};

TEST_F(PaintedWallpaper, LiesWhereItLiesOnTheScreen)
{
    for (const DeviceRect area : {DeviceRect{0, 0, 20, 12}, {13, 11, 20, 12}, {0, 99, 320, 1}, {101, 0, 1, 200}, {0, 0, 20, 12}})
        EXPECT_EQ(paintRoot(area), tiled(area)) << area.x << ", " << area.y;
    // Taken anew.
    for (int i = 0; i < 2; ++i, ++m_root.generation)
        EXPECT_EQ(paintRoot({13, 11, 20, 12}), tiled({13, 11, 20, 12}));
    // A part of what is captured.
    const auto colours = paintRoot({10, 10, 20, 20}, {15, 12, 5, 5});
    EXPECT_EQ(colours[2 * 20 + 5], colourAt(15, 12));
    EXPECT_EQ(colours[6 * 20 + 9], colourAt(19, 16));
}

TEST_F(PaintedWallpaper, StaysWhereItsOwnerFreesItAndIsGreyOnceItIsAskedForAnew)
{
    const DeviceRect area = {13, 11, 20, 12};
    const std::vector<std::uint32_t> grey(tiled(area).size(), 0x808080);
    EXPECT_EQ(paintRoot(area), tiled(area));
    xcb_free_pixmap(m_c, m_root.wallpaper);
    EXPECT_EQ(paintRoot(area), tiled(area));
    ++m_root.generation;
    EXPECT_EQ(paintRoot(area), grey);
    m_root.wallpaper = XCB_NONE;
    ++m_root.generation;
    EXPECT_EQ(paintRoot(area), grey);
}

// Each would be a message to read at every capture.
TEST_F(Painter, HearsNothingOfCopiesThatReachBeyondAWindow)
{
    const auto step = stepFor(window(0xff0000), {0, 0, 30, 30});
    EXPECT_EQ(paint({step}), 0xff0000U);
    EXPECT_EQ(m_eventCount, 0);
}

}  // namespace
}  // namespace CaptureTests

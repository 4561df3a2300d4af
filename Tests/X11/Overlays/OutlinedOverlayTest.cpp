// An overlay that is one thing with an outline of its own, with and without a compositor.
#include <gtest/gtest.h>
#include <xcb/shape.h>

#include <cmath>
#include <future>

#include "Support/Desktop/TestWindow.h"
#include "Support/Desktop/Wallpaper.h"
#include "X11/Capture/AllocationCounter.h"
#include "X11/Overlays/OverlaysSetting.h"

namespace OverlayTests {
namespace {

using TestSupport::TestWindow;
using TestSupport::WindowManagerKind;

constexpr int side = 120;
constexpr int footer = 28;
constexpr std::uint32_t core = 0xffff0000;
constexpr std::uint32_t rim = 0x73000000;
constexpr std::uint32_t fringe = 0x10000000;
constexpr std::uint32_t tinted = 0x80800000;

// A disc with a half-transparent rim and a faint fringe, and below it a bar of half-transparent red.
Image disc(std::uint32_t inside = core)
{
    Image image(side, side + footer);
    auto pixel = image.pixels().begin();
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < side; ++x) {
            const double distance = std::hypot(x + 0.5 - side / 2.0, y + 0.5 - side / 2.0);
            const bool isBar = y >= side + 4 && y < side + 24 && x >= 20 && x < 100;
            *pixel++ = distance < 57 ? inside : distance < 58 ? rim : distance < 59 ? fringe : isBar ? tinted : 0U;
        }
    }
    return image;
}

std::uint32_t blended(std::uint32_t over, std::uint32_t beneath)
{
    const std::uint32_t rest = 255 - (over >> 24);
    std::uint32_t pixel = 0xff000000;
    for (const unsigned shift : {0U, 8U, 16U})
        pixel |= std::min(255U, ((over >> shift) & 0xff) + (((beneath >> shift) & 0xff) * rest + 127) / 255) << shift;
    return pixel;
}

// Compositors round each in their own way.
bool isNear(std::uint32_t a, std::uint32_t b)
{
    for (const unsigned shift : {0U, 8U, 16U}) {
        if (std::abs(static_cast<int>((a >> shift) & 0xff) - static_cast<int>((b >> shift) & 0xff)) > 1)
            return false;
    }
    return true;
}

Image plain(int width, int height, std::uint32_t colour)
{
    Image image(width, height);
    std::fill(image.pixels().begin(), image.pixels().end(), colour);
    return image;
}

// Draws an image, of which that is the alpha's number.
class ImageSource final : public PixelSource {
public:
    ImageSource(const Image& image, std::uint64_t alphaNumber) : m_image(image), m_alphaNumber(alphaNumber) { }

    int width() const override { return m_image.width(); }
    int height() const override { return m_image.height(); }
    void draw(std::span<std::uint32_t> pixels) override
    {
        ASSERT_EQ(pixels.size(), m_image.pixels().size());
        std::copy(m_image.pixels().begin(), m_image.pixels().end(), pixels.begin());
    }
    std::uint64_t alphaNumber() const override { return m_alphaNumber; }

private:
    const Image& m_image;
    const std::uint64_t m_alphaNumber;
};

class OutlinedSetting : public OverlaysSetting {
protected:
    using OverlaysSetting::OverlaysSetting;

    static constexpr std::uint32_t ground = 0xff4060a0;

    std::unique_ptr<OverlayWindow> makeDisc(int left, int top)
    {
        auto overlay = overlays->makeOverlayWindow({.frame = frameAt(left, top), .hasShadow = true}, delegate);
        overlay->makeKeyAndOrderFront();
        present(*overlay, picture, discAlpha);
        return overlay;
    }

    // Of a frame whose top-left corner is that device pixel.
    static Rect frameAt(int left, int top) { return {double(left), 600.0 - top - side - footer, side, side + footer}; }

    static constexpr std::uint64_t discAlpha = 1;

    static void present(OverlayWindow& overlay, const Image& image)
    {
        const Picture shown{.rectangle = {0, 0, side, side + footer}, .image = &image};
        overlay.present({&shown, 1});
    }
    static void present(OverlayWindow& overlay, const Image& image, std::uint64_t alphaNumber)
    {
        ImageSource source(image, alphaNumber);
        const Picture shown{.rectangle = {0, 0, side, side + footer}, .source = &source};
        overlay.present({&shown, 1});
    }

    void moveTo(OverlayWindow& overlay, int left, int top)
    {
        overlay.setFrame(frameAt(left, top));
        present(overlay, picture, discAlpha);
    }

    // How many pixels are not what they must be with the disc at that corner, each of which
    // is `expected` of the picture's pixel and the ground.
    template <typename Expected> int wrongPixels(int left, int top, Expected&& expected)
    {
        const auto shown = screenshot();
        int wrong = 0;
        for (int y = 0; y < shown.height(); ++y) {
            for (int x = 0; x < shown.width(); ++x) {
                const bool isInside = x >= left && y >= top && x < left + side && y < top + side + footer;
                const auto own = isInside ? picture.pixel(x - left, y - top) : 0;
                wrong += isNear(shown.pixel(x, y), expected(own)) ? 0 : 1;
            }
        }
        return wrong;
    }
    int wrongPixelsBlended(int left, int top)
    {
        return wrongPixels(left, top, [](std::uint32_t own) { return blended(own, ground); });
    }
    int wrongPixelsHard(int left, int top)
    {
        return wrongPixels(left, top, [](std::uint32_t own) { return own == core || own == tinted ? 0xffff0000 : own == rim ? 0xff000000 : ground; });
    }

    xcb_window_t pictureWindow() const
    {
        std::vector<OverlayEntry> entries;
        stack.copyTo(entries);
        return entries.back().pictures.at(0).window;
    }

    const Image picture = disc();
    TestSupport::Wallpaper wallpaper{desktop.displayName(), plain(800, 600, ground)};
};

class OutlinedOverlay : public OutlinedSetting { };

TEST_F(OutlinedOverlay, HasHardEdgesAndItsOwnColoursWithoutACompositor)
{
    const auto overlay = makeDisc(200, 100);
    EXPECT_EQ(wrongPixelsHard(200, 100), 0);
    overlay->orderOut();
    EXPECT_EQ(screenshot(), plain(800, 600, ground));
}

TEST_F(OutlinedOverlay, FollowsItsFrameOffTheScreenAndBack)
{
    const auto overlay = makeDisc(200, 100);
    for (const auto& [left, top] : {std::pair{-60, 100}, {-60, -60}, {740, -60}, {740, 540}, {-110, 590}, {300, 300}}) {
        moveTo(*overlay, left, top);
        EXPECT_EQ(wrongPixelsHard(left, top), 0) << left << ", " << top;
    }
    moveTo(*overlay, -500, -400);
    EXPECT_EQ(screenshot(), plain(800, 600, ground));
}

TEST_F(OutlinedOverlay, IsShapedAnewOnlyWhenTheOutlineChanges)
{
    const auto overlay = makeDisc(200, 100);
    auto& connection = desktop.connection();
    screenshot();
    adopt(xcb_shape_query_version_reply(connection, xcb_shape_query_version(connection), nullptr));
    xcb_shape_select_input(connection, pictureWindow(), 1);
    const auto shapes = [&] {
        screenshot();
        int count = 0;
        while (const auto event = Event(xcb_poll_for_event(connection)))
            count += eventType(*event) == connection.firstEvent(xcb_shape_id) ? 1 : 0;
        return count;
    };
    EXPECT_EQ(shapes(), 0);
    for (int i = 0; i < 10; ++i)
        moveTo(*overlay, 200 + i, 100);
    present(*overlay, disc(blue));
    EXPECT_EQ(shapes(), 0);
    auto cut = picture;
    cut.pixels()[60 * side + 60] = 0;
    present(*overlay, cut);
    EXPECT_EQ(shapes(), 1);
    present(*overlay, picture, discAlpha);
    EXPECT_EQ(shapes(), 1);
    present(*overlay, disc(blue), discAlpha);
    EXPECT_EQ(shapes(), 0);
    present(*overlay, cut, discAlpha + 1);
    EXPECT_EQ(shapes(), 1);
}

TEST_F(OutlinedOverlay, IsOpaqueInTheColoursOfEachPictureOfTheSameAlpha)
{
    const auto overlay = makeDisc(200, 100);
    auto greenish = picture;
    for (auto& pixel : greenish.pixels())
        pixel = pixel == core ? 0xff00ff00 : pixel == tinted ? 0x80008000 : pixel;
    present(*overlay, greenish, discAlpha);
    const auto screen = screenshot();
    EXPECT_EQ(screen.pixel(260, 160), 0xff00ff00U);
    EXPECT_EQ(screen.pixel(260, 100 + side + 10), 0xff00ff00U);
    EXPECT_EQ(screen.pixel(200, 160), ground);
}

TEST_F(OutlinedOverlay, PresentsWithoutAnAllocationAndWithoutWaitingForTheServer)
{
    const auto overlay = makeDisc(200, 100);
    moveTo(*overlay, 201, 100);
    screenshot();
    holdServer();
    auto presenting = std::async(std::launch::async, [&] {
        const auto before = CaptureTests::allocationCount();
        moveTo(*overlay, 202, 100);
        moveTo(*overlay, 203, 100);
        return CaptureTests::allocationCount() - before;
    });
    const bool hasReturned = presenting.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
    letServerGo();
    EXPECT_TRUE(hasReturned);
    EXPECT_EQ(presenting.get(), 0U);
    EXPECT_EQ(wrongPixelsHard(203, 100), 0);
}

// Both halves of the shared memory are still to be read then.
TEST_F(OutlinedOverlay, WaitsWithAThirdPictureForTheServerToReadTheFirst)
{
    const auto overlay = makeDisc(200, 100);
    moveTo(*overlay, 201, 100);
    screenshot();
    holdServer();
    auto presenting = std::async(std::launch::async, [&] {
        for (const int x : {202, 203, 204})
            moveTo(*overlay, x, 100);
    });
    EXPECT_EQ(presenting.wait_for(std::chrono::milliseconds(300)), std::future_status::timeout);
    letServerGo();
    presenting.get();
    EXPECT_EQ(wrongPixelsHard(204, 100), 0);
}

TEST_F(OutlinedOverlay, GrowsAndShrinks)
{
    const auto overlay = makeDisc(200, 100);
    for (const int size : {400, 120, 300}) {
        const auto square = plain(size, size, core);
        overlay->setFrame({100, 600.0 - 50 - size, double(size), double(size)});
        const Picture shown{.rectangle = {0, 0, double(size), double(size)}, .image = &square};
        overlay->present({&shown, 1});
        const auto screen = screenshot();
        EXPECT_EQ(std::count(screen.pixels().begin(), screen.pixels().end(), core), long{size} * size);
        EXPECT_EQ(screen.pixel(100, 50), core);
    }
}

TEST_F(OutlinedOverlay, ShowsThePartOfAHugeOneThatLiesOnTheScreen)
{
    const auto overlay = makeDisc(200, 100);
    Image halves(2, 1);
    halves.pixels()[0] = core;
    halves.pixels()[1] = blue;
    for (const double size : {3e4, 1e5, 1e9}) {
        overlay->setFrame({300 - size / 2, 300 - size / 2, size, size});
        EXPECT_EQ(overlay->frame().width, size);
        const Picture shown{.rectangle = {0, 0, size, size}, .image = &halves};
        overlay->present({&shown, 1});
        const auto screen = screenshot();
        EXPECT_EQ(screen.pixel(0, 599), core) << size;
        EXPECT_EQ(screen.pixel(299, 0), core) << size;
        EXPECT_EQ(screen.pixel(300, 0), blue) << size;
        EXPECT_EQ(screen.pixel(799, 599), blue) << size;
    }
    // As much of it lies on the screen, but another part.
    halves.pixels()[1] = 0;
    for (const auto& [left, size] : {std::pair{-3600.0, 8000.0}, {-3000.0, 8000.0}, {-3000.0, 6800.0}}) {
        overlay->setFrame({left, 3600 - size, size, size});
        ImageSource source(halves, discAlpha + 1);
        const Picture shown{.rectangle = {0, 0, size, size}, .source = &source};
        overlay->present({&shown, 1});
        const auto screen = screenshot();
        EXPECT_EQ(screen.pixel(399, 300), core) << left;
        EXPECT_EQ(screen.pixel(400, 300), left + size / 2 > 400 ? core : ground) << left << " " << size;
    }
    overlay->setFrame({-5e17, -5e17, 1e18, 1e18});
    present(*overlay, picture);
    moveTo(*overlay, 200, 100);
    EXPECT_EQ(wrongPixelsHard(200, 100), 0);
}

// Further than any sensible overlay its window does not reach.
TEST_F(OutlinedOverlay, DrawsAllOfASourceOfWhichAPartIsFarOffTheScreen)
{
    const auto overlay = makeDisc(200, 100);
    Image wide(3000, 100);
    for (std::size_t i = 0; i < wide.pixels().size(); ++i)
        wide.pixels()[i] = i % 3000 < 2500 ? core : blue;
    overlay->setFrame({-2200, 400, 3000, 100});
    ImageSource source(wide, discAlpha + 1);
    const Picture shown{.rectangle = {0, 0, 3000, 100}, .source = &source};
    overlay->present({&shown, 1});
    const auto screen = screenshot();
    EXPECT_EQ(screen.pixel(0, 150), core);
    EXPECT_EQ(screen.pixel(299, 150), core);
    EXPECT_EQ(screen.pixel(300, 150), blue);
    EXPECT_EQ(screen.pixel(799, 150), blue);
    EXPECT_EQ(screen.pixel(799, 200), ground);
}

TEST_F(OutlinedOverlay, TellsTheCaptureWhereItWillLieBeforeItMoves)
{
    const auto overlay = makeDisc(200, 100);
    overlay->setFrame(frameAt(-30, 120));
    std::vector<OverlayEntry> entries;
    stack.copyTo(entries);
    EXPECT_TRUE(entries[0].isOutlined);
    EXPECT_EQ(entries[0].upcoming, (DeviceRect{-30, 120, side, side + footer}));
    EXPECT_EQ(entries[0].pictures[0].frame, (DeviceRect{200, 100, side, side + footer}));
}

TEST_F(OutlinedOverlay, ChangesItsFormatWhenACompositorComesAndGoes)
{
    const auto overlay = makeDisc(200, 100);
    settle();
    ASSERT_EQ(wrongPixelsHard(200, 100), 0);
    auto picom = desktop.server().start({"picom", "--backend", "xrender", "--config", "/dev/null"});
    const auto isShown = [&](auto&& wrong) {
        present(*overlay, picture);
        return wrong() == 0;
    };
    EXPECT_TRUE(loopUntil([&] { return isShown([&] { return wrongPixelsBlended(200, 100); }); })) << wrongPixelsBlended(200, 100);
    picom.kill();
    EXPECT_TRUE(loopUntil([&] { return isShown([&] { return wrongPixelsHard(200, 100); }); })) << wrongPixelsHard(200, 100);
}

class OutlinedOverlayUnder : public OutlinedSetting, public testing::WithParamInterface<WindowManagerKind> {
protected:
    OutlinedOverlayUnder() : OutlinedSetting(GetParam()) { }
};

INSTANTIATE_TEST_SUITE_P(WindowManagers, OutlinedOverlayUnder,
    testing::Values(WindowManagerKind::none, WindowManagerKind::openboxWithPicom, WindowManagerKind::xfwm4WithCompositor),
    [](const auto& kind) { return TestSupport::nameOf(kind.param); });

TEST_P(OutlinedOverlayUnder, TakesClicksInsideItsOutlineOnly)
{
    TestWindow window(desktop.displayName(), "beneath", {100, 60, 500, 400}, 1);
    window.activate();
    const auto overlay = makeDisc(200, 100);
    settle();
    desktop.pointer().moveTo(450, 400);
    window.takeEvents();
    // The core, the rim and the bar.
    for (const auto& [x, y] : {std::pair{260, 160}, {202, 160}, {240, 234}}) {
        desktop.pointer().moveTo(x, y);
        desktop.pointer().click(1);
    }
    EXPECT_EQ(window.takeEvents(), std::vector<std::string>{});
    // A corner, and beside the bar. A window manager may look at a click before it lets it through.
    for (const auto& [x, y] : {std::pair{205, 105}, {205, 234}}) {
        desktop.pointer().moveTo(x, y);
        desktop.pointer().click(1);
        std::vector<std::string> events;
        loopUntil([&] {
            for (auto& event : window.takeEvents())
                events.push_back(std::move(event));
            return events.size() >= 2;
        });
        EXPECT_EQ(events, (std::vector<std::string>{"ButtonPress 1", "ButtonRelease 1"})) << x << ", " << y;
    }
}

class OutlinedOverlayComposited : public OutlinedOverlayUnder { };

INSTANTIATE_TEST_SUITE_P(WindowManagers, OutlinedOverlayComposited, testing::Values(WindowManagerKind::openboxWithPicom),
    [](const auto& kind) { return TestSupport::nameOf(kind.param); });

TEST_P(OutlinedOverlayComposited, BlendsWithWhatLiesBeneath)
{
    const auto overlay = makeDisc(200, 100);
    EXPECT_TRUE(loopUntil([&] { return wrongPixelsBlended(200, 100) == 0; })) << wrongPixelsBlended(200, 100);
    moveTo(*overlay, -60, 500);
    EXPECT_TRUE(loopUntil([&] { return wrongPixelsBlended(-60, 500) == 0; })) << wrongPixelsBlended(-60, 500);
}

}  // namespace
}  // namespace OverlayTests

// What all overlay windows promise, asked of the fake and of those on a real server.
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include <cmath>
#include <set>
#include <vector>

#include "Contracts/RealLoop.h"
#include "Platform/X11/Capture/X11ScreenCapture.h"
#include "Platform/X11/Overlays/X11OverlayWindows.h"
#include "Support/Desktop/Desktop.h"
#include "Support/FakeOverlayWindows.h"

namespace Contracts {
namespace {

using Platform::KeyEvent;
using Platform::OverlayWindow;
using Platform::Picture;
using Platform::Rect;

constexpr std::uint32_t red = 0xffff0000;
constexpr std::uint32_t green = 0xff00ff00;
constexpr std::uint32_t blue = 0xff0000ff;
constexpr std::uint32_t nothing = 0;
constexpr std::uint16_t keyA = 0;
constexpr std::uint16_t keyS = 1;

class FakeDesk {
public:
    Platform::OverlayWindows& overlays() { return m_overlays; }

    // The colour of the overlays at the pixel whose lower left corner this is.
    std::uint32_t colourAt(double x, double y)
    {
        std::uint32_t colour = nothing;
        for (const auto* window : m_overlays.shown()) {
            if (!holds(window->frame(), x, y))
                continue;
            for (const auto& picture : window->pictures())
                colour = colourOf(*window, picture, x, y).value_or(colour);
        }
        return colour;
    }
    void press(std::uint16_t key) { m_overlays.pressKey({.keyCode = key}); }
    int failedRequests() const { return 0; }
    template <typename Condition> bool waitUntil(Condition&& condition) { return condition(); }

private:
    static bool holds(const Rect& rect, double x, double y)
    {
        return x >= rect.x && y >= rect.y && x < rect.x + rect.width && y < rect.y + rect.height;
    }
    static std::optional<std::uint32_t> colourOf(
        const TestSupport::FakeOverlayWindow& window, const TestSupport::ShownPicture& picture, double x, double y)
    {
        if (!holds(picture.rectangle, x - window.frame().x, y - window.frame().y))
            return std::nullopt;
        return picture.hasImage ? picture.image.pixel(0, 0) : picture.colour;
    }

    TestSupport::CallLog m_log;
    TestSupport::FakeOverlayWindows m_overlays{m_log};
};

// With the capture, which makes the server keep what lies under other windows. Points are
// pixels; the colour of the screen itself counts as nothing.
class RealDesk {
public:
    RealDesk() { m_layout.set(Platform::X11::MonitorLayout({{"MAIN", {0, 0, 800, 600}, 1}})); }
    Platform::OverlayWindows& overlays() { return m_overlays; }

    std::uint32_t colourAt(double x, double y)
    {
        Platform::X11::adopt(xcb_get_input_focus_reply(*m_requests, xcb_get_input_focus(*m_requests), nullptr));
        const auto colour = m_desktop.screenshot().pixel(static_cast<int>(x), 599 - static_cast<int>(y));
        return std::set{red, green, blue}.contains(colour) ? colour : nothing;
    }
    void press(std::uint16_t key) { m_desktop.keyboard().tap(*Platform::evdevCode(key)); }
    // Since the last call.
    int failedRequests()
    {
        m_requests->waitForServer();
        int count = 0;
        while (const auto event = Platform::X11::Event(xcb_poll_for_event(*m_requests)))
            count += event->response_type == 0 ? 1 : 0;
        return count;
    }
    template <typename Condition> bool waitUntil(Condition&& condition) { return TestSupport::loopUntil(condition); }

private:
    std::unique_ptr<Platform::X11::Connection> open() const { return Platform::X11::Connection::open(m_desktop.displayName()); }

    TestSupport::Desktop m_desktop{TestSupport::WindowManagerKind::none, "800x600x24"};
    RealLoop m_loop;
    std::unique_ptr<Platform::X11::Connection> m_requests = open();
    std::unique_ptr<Platform::X11::Connection> m_stackEvents = open();
    std::unique_ptr<Platform::X11::Connection> m_focusEvents = open();
    Platform::X11::SharedMonitorLayout m_layout;
    Platform::X11::OverlayStack m_stack;
    std::unique_ptr<Platform::X11::X11ScreenCapture> m_capture = Platform::X11::X11ScreenCapture::open(m_desktop.displayName(), m_layout, m_stack);
    std::unique_ptr<Platform::X11::OverlayKeys> m_keys = Platform::X11::OverlayKeys::open(m_desktop.displayName(), m_loop.loop(), m_loop.loop());
    Platform::X11::X11OverlayWindows m_overlays{Platform::X11::X11OverlayWindows::Parts{
        *m_requests, *m_stackEvents, *m_focusEvents, m_loop.loop(), m_loop.loop(), m_layout, m_stack, *m_capture, *m_keys}};
};

struct Owner : Platform::OverlayWindowDelegate {
    void keyDown(const KeyEvent& event) override { keys.push_back(event); }
    void dismissRequested() override { ++dismissRequests; }

    std::vector<KeyEvent> keys;
    int dismissRequests = 0;
};

template <typename Desk> class OverlayWindowsContract : public testing::Test {
protected:
    std::unique_ptr<OverlayWindow> make(Owner& anOwner) { return desk.overlays().makeOverlayWindow({.frame = {0, 0, 800, 600}}, anOwner); }
    std::unique_ptr<OverlayWindow> make() { return make(owner); }

    static void presentColour(OverlayWindow& overlay, const Rect& rectangle, std::uint32_t colour)
    {
        const Picture picture = {.rectangle = rectangle, .colour = colour};
        overlay.present({&picture, 1});
    }

    // The keys come with what is presented.
    static void showWithKeys(OverlayWindow& overlay)
    {
        overlay.makeKeyAndOrderFront();
        overlay.present({});
    }

    static std::vector<int> codesOf(const Owner& anOwner)
    {
        std::vector<int> codes;
        for (const auto& key : anOwner.keys)
            codes.push_back(key.keyCode);
        return codes;
    }
    using Codes = std::vector<int>;

    // Keys arrive in order: once the last one expected is there, so are those before it.
    void expectKeys(const Owner& anOwner, const Codes& expected)
    {
        EXPECT_TRUE(desk.waitUntil([&] { return anOwner.keys.size() >= expected.size(); }));
        EXPECT_EQ(codesOf(anOwner), expected);
    }

    Owner owner;
    Desk desk;
};

using Desks = testing::Types<FakeDesk, RealDesk>;
TYPED_TEST_SUITE(OverlayWindowsContract, Desks);

TYPED_TEST(OverlayWindowsContract, NumbersWindowsPositivelyAndNeverTheSame)
{
    std::set<std::int64_t> numbers;
    const auto kept = this->make();
    numbers.insert(kept->windowNumber());
    for (int i = 0; i < 20; ++i) {
        const auto overlay = this->make();
        EXPECT_GT(overlay->windowNumber(), 0);
        EXPECT_LE(overlay->windowNumber(), 0xffffffff);
        numbers.insert(overlay->windowNumber());
    }
    EXPECT_EQ(numbers.size(), 21U);
    EXPECT_EQ(kept->windowNumber(), *numbers.begin());
}

TYPED_TEST(OverlayWindowsContract, KeepsItsFrameToTheLastBit)
{
    const auto overlay = this->make();
    EXPECT_EQ(overlay->frame(), (Rect{0, 0, 800, 600}));
    for (const Rect& frame : {Rect{10.25, 20.1, 30.7, 40.3}, Rect{-100, -50, 10, 10}, Rect{0, 0, 0, 0}, Rect{5, 6, 800, 600}}) {
        overlay->setFrame(frame);
        EXPECT_EQ(overlay->frame(), frame);
        overlay->makeKeyAndOrderFront();
        EXPECT_EQ(overlay->frame(), frame);
        overlay->orderOut();
        EXPECT_EQ(overlay->frame(), frame);
    }
}

TYPED_TEST(OverlayWindowsContract, ShowsNothingInAFrameOfNegativeSideAndKeepsIt)
{
    const Rect good = {0, 0, 800, 600};
    for (const Rect& frame : {Rect{500, 100, -300, 300}, Rect{100, 400, 300, -300}, Rect{500, 400, -300, -300}}) {
        const auto overlay = this->desk.overlays().makeOverlayWindow({.frame = frame}, this->owner);
        EXPECT_EQ(overlay->frame(), frame);
        overlay->makeKeyAndOrderFront();
        for (int i = 0; i < 2; ++i) {
            this->presentColour(*overlay, {-400, -400, 1200, 1200}, red);
            for (const double place : {50, 150, 250, 350, 450, 550})
                EXPECT_EQ(this->desk.colourAt(place, place), nothing) << place;
            overlay->setFrame(good);
            this->presentColour(*overlay, {200, 200, 100, 100}, green);
            EXPECT_EQ(this->desk.colourAt(250, 250), green);
            EXPECT_EQ(this->desk.colourAt(350, 250), nothing);
            overlay->setFrame(frame);
            EXPECT_EQ(overlay->frame(), frame);
        }
    }
    EXPECT_EQ(this->desk.failedRequests(), 0);
}

TYPED_TEST(OverlayWindowsContract, ShowsItsPicturesOnlyWhileInFront)
{
    auto overlay = this->make();
    this->presentColour(*overlay, {100, 100, 50, 50}, red);
    EXPECT_EQ(this->desk.colourAt(120, 120), nothing);
    overlay->makeKeyAndOrderFront();
    EXPECT_EQ(this->desk.colourAt(120, 120), red);
    EXPECT_EQ(this->desk.colourAt(99, 120), nothing);
    EXPECT_EQ(this->desk.colourAt(100, 149), red);
    EXPECT_EQ(this->desk.colourAt(100, 150), nothing);
    overlay->orderOut();
    EXPECT_EQ(this->desk.colourAt(120, 120), nothing);
    overlay->makeKeyAndOrderFront();
    EXPECT_EQ(this->desk.colourAt(120, 120), red);
    overlay.reset();
    EXPECT_EQ(this->desk.colourAt(120, 120), nothing);
}

TYPED_TEST(OverlayWindowsContract, KeepsWhatIsPresentedWhileOrderedOut)
{
    const auto overlay = this->make();
    this->presentColour(*overlay, {100, 100, 50, 50}, red);
    overlay->makeKeyAndOrderFront();
    overlay->orderOut();
    this->presentColour(*overlay, {300, 100, 50, 50}, green);
    overlay->makeKeyAndOrderFront();
    EXPECT_EQ(this->desk.colourAt(120, 120), nothing);
    EXPECT_EQ(this->desk.colourAt(320, 120), green);
}

TYPED_TEST(OverlayWindowsContract, KeepsImagesWhileOrderedOut)
{
    const auto overlay = this->make();
    overlay->makeKeyAndOrderFront();
    for (const int side : {1, 200}) {
        Platform::Image image(side, side);
        std::fill(image.pixels().begin(), image.pixels().end(), side == 1 ? red : blue);
        const Picture picture = {.rectangle = {100, 100, 200, 200}, .image = &image};
        overlay->present({&picture, 1});
        for (int i = 0; i < 3; ++i) {
            overlay->orderOut();
            EXPECT_EQ(this->desk.colourAt(120, 120), nothing);
            overlay->makeKeyAndOrderFront();
            EXPECT_EQ(this->desk.colourAt(120, 120), side == 1 ? red : blue);
        }
    }
}

TYPED_TEST(OverlayWindowsContract, PutsLaterPicturesAboveEarlierOnes)
{
    const auto overlay = this->make();
    overlay->makeKeyAndOrderFront();
    const Picture pictures[] = {{.rectangle = {100, 100, 50, 50}, .colour = red}, {.rectangle = {120, 120, 50, 50}, .colour = green}};
    overlay->present(pictures);
    EXPECT_EQ(this->desk.colourAt(110, 110), red);
    EXPECT_EQ(this->desk.colourAt(130, 130), green);
    EXPECT_EQ(this->desk.colourAt(160, 160), green);
    // Everything from now on, also where there was more before.
    this->presentColour(*overlay, {120, 120, 50, 50}, blue);
    EXPECT_EQ(this->desk.colourAt(110, 110), nothing);
    EXPECT_EQ(this->desk.colourAt(130, 130), blue);
    overlay->present({});
    EXPECT_EQ(this->desk.colourAt(130, 130), nothing);
}

TYPED_TEST(OverlayWindowsContract, ReadsAnImageDuringThePresentOnly)
{
    const auto overlay = this->make();
    overlay->makeKeyAndOrderFront();
    {
        Platform::Image image(1, 1);
        image.pixels()[0] = red;
        const Picture picture = {.rectangle = {100, 100, 50, 50}, .image = &image};
        overlay->present({&picture, 1});
        image.pixels()[0] = green;
    }
    EXPECT_EQ(this->desk.colourAt(120, 120), red);
}

TYPED_TEST(OverlayWindowsContract, PutsTheLastOverlayOrderedFrontAboveTheOthers)
{
    const auto first = this->make();
    const auto second = this->make();
    this->presentColour(*first, {100, 100, 50, 50}, red);
    this->presentColour(*second, {100, 100, 50, 50}, green);
    second->makeKeyAndOrderFront();
    first->makeKeyAndOrderFront();
    EXPECT_EQ(this->desk.colourAt(120, 120), red);
    second->makeKeyAndOrderFront();
    EXPECT_EQ(this->desk.colourAt(120, 120), green);
    second->orderOut();
    EXPECT_EQ(this->desk.colourAt(120, 120), red);
}

TYPED_TEST(OverlayWindowsContract, GivesTheKeysToTheLastOverlayOrderedFrontAmongThoseShown)
{
    Owner firstOwner;
    Owner secondOwner;
    const auto first = this->make(firstOwner);
    auto second = this->make(secondOwner);
    this->showWithKeys(*first);
    second->makeKeyAndOrderFront();
    this->desk.press(keyA);
    this->expectKeys(secondOwner, {keyA});
    first->makeKeyAndOrderFront();
    this->desk.press(keyS);
    this->expectKeys(firstOwner, {keyS});
    first->orderOut();
    this->desk.press(keyS);
    this->expectKeys(secondOwner, {keyA, keyS});
    first->makeKeyAndOrderFront();
    second->makeKeyAndOrderFront();
    second.reset();
    this->desk.press(keyA);
    this->expectKeys(firstOwner, {keyS, keyA});
    EXPECT_EQ(secondOwner.keys.size(), 2U);
}

TYPED_TEST(OverlayWindowsContract, GivesNoKeysToAnOverlayThatIsNotShown)
{
    const auto overlay = this->make();
    this->desk.press(keyA);
    this->showWithKeys(*overlay);
    overlay->orderOut();
    this->desk.press(keyA);
    overlay->makeKeyAndOrderFront();
    overlay->orderOut();
    this->desk.press(keyA);
    this->showWithKeys(*overlay);
    this->desk.press(keyS);
    this->expectKeys(this->owner, {keyS});
    EXPECT_EQ(this->owner.keys, (std::vector<KeyEvent>{{.keyCode = keyS, .modifiers = 0, .isRepeat = false}}));
}

TYPED_TEST(OverlayWindowsContract, TakesTheKeysSoonWhereNothingIsPresented)
{
    const auto overlay = this->make();
    overlay->makeKeyAndOrderFront();
    EXPECT_TRUE(this->desk.waitUntil([&] {
        this->desk.press(keyA);
        return !this->owner.keys.empty();
    }));
}

TYPED_TEST(OverlayWindowsContract, TakesRepeatedOrdersWithoutHarm)
{
    const auto overlay = this->make();
    this->presentColour(*overlay, {100, 100, 50, 50}, red);
    overlay->orderOut();
    overlay->makeKeyAndOrderFront();
    overlay->makeKeyAndOrderFront();
    EXPECT_EQ(this->desk.colourAt(120, 120), red);
    this->presentColour(*overlay, {100, 100, 50, 50}, red);
    this->desk.press(keyA);
    this->expectKeys(this->owner, {keyA});
    overlay->orderOut();
    overlay->orderOut();
    EXPECT_EQ(this->desk.colourAt(120, 120), nothing);
    EXPECT_EQ(this->owner.dismissRequests, 0);
}

TYPED_TEST(OverlayWindowsContract, LetsItsOwnerOrderItOutWhenAKeyComes)
{
    struct : Platform::OverlayWindowDelegate {
        void keyDown(const KeyEvent&) override
        {
            ++keys;
            overlay->orderOut();
        }
        void dismissRequested() override { }
        int keys = 0;
        std::unique_ptr<OverlayWindow> overlay;
    } dismissing;
    const auto below = this->make();
    this->showWithKeys(*below);
    dismissing.overlay = this->desk.overlays().makeOverlayWindow({.frame = {0, 0, 800, 600}}, dismissing);
    dismissing.overlay->makeKeyAndOrderFront();
    this->desk.press(keyA);
    ASSERT_TRUE(this->desk.waitUntil([&] { return dismissing.keys == 1; }));
    this->desk.press(keyS);
    this->expectKeys(this->owner, {keyS});
    EXPECT_EQ(dismissing.keys, 1);
    dismissing.overlay.reset();
}

}  // namespace
}  // namespace Contracts

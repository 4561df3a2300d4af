// The windows by which the capture learns the root background, as other programs see them.
#include "X11/Capture/CaptureSetting.h"

namespace CaptureTests {
namespace {

using namespace Platform;
using namespace Platform::X11;

class RootBackground : public CaptureSetting {
protected:
    void SetUp() override
    {
        CaptureSetting::SetUp();
        m_desktop.setRootTile(tileOf(0x123456));
        m_desktop.makeMappedWindow({.inner = {0, 0, 20, 20}, .colour = 0x00ff00});
        showOverlay(1, m_desktop.screen());
        m_capture->activate();
        m_desktop.sync();
        auto& c = *m_watcher;
        const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(c, c.root(), XCB_CW_EVENT_MASK, &events);
        takeEvents();
    }

    std::vector<Event> takeEvents()
    {
        auto& c = *m_watcher;
        adopt(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
        std::vector<Event> events;
        while (auto event = Event(xcb_poll_for_event(c)))
            events.push_back(std::move(event));
        return events;
    }

    std::unique_ptr<Connection> m_watcher = Connection::open(m_server.displayName());
};

template <typename T> const T& as(const Event& event) { return reinterpret_cast<const T&>(*event); }

TEST_F(RootBackground, ComesFromAWindowBelowEverythingThatNoWindowManagerMinds)
{
    EXPECT_EQ(coloursOf(capture({100, 100, 20, 20})), (Colours{0xff123456}));
    xcb_window_t atTheBottom = XCB_WINDOW_NONE;
    int mapped = 0;
    int destroyed = 0;
    for (const auto& event : takeEvents()) {
        const auto type = eventType(*event);
        if (type == XCB_CREATE_NOTIFY) {
            EXPECT_EQ(as<xcb_create_notify_event_t>(event).override_redirect, 1);
        }
        if (type == XCB_CONFIGURE_NOTIFY && as<xcb_configure_notify_event_t>(event).above_sibling == XCB_WINDOW_NONE)
            atTheBottom = as<xcb_configure_notify_event_t>(event).window;
        if (type == XCB_MAP_NOTIFY) {
            ++mapped;
            EXPECT_EQ(as<xcb_map_notify_event_t>(event).window, atTheBottom);
        }
        destroyed += type == XCB_DESTROY_NOTIFY ? 1 : 0;
    }
    EXPECT_EQ(mapped, 1);
    EXPECT_EQ(destroyed, 1);
}

TEST_F(RootBackground, IsNotAskedForAgainWhereItIsKnown)
{
    const auto captureBoth = [this] {
        capture({100, 100, 20, 20});
        capture({200, 30, 20, 20});
    };
    captureBoth();
    EXPECT_FALSE(takeEvents().empty());
    for (int i = 0; i < 5; ++i)
        captureBoth();
    EXPECT_TRUE(takeEvents().empty());
    m_desktop.setRootTile(tileOf(0x654321));
    EXPECT_EQ(coloursOf(capture({200, 30, 20, 20})), (Colours{0xff654321}));
}

// What moves over it by a few pixels at a time needs a window for it once in a while.
TEST_F(RootBackground, IsAskedForSeldomByWhatMoves)
{
    int mapped = 0;
    for (int x = 25; x < 57; x += 2) {
        EXPECT_EQ(coloursOf(capture({static_cast<double>(x), 30, 263, 100})), (Colours{0xff123456})) << x;
        for (const auto& event : takeEvents())
            mapped += eventType(*event) == XCB_MAP_NOTIFY ? 1 : 0;
    }
    EXPECT_EQ(mapped, 1);
}

// A line is as long as the screen: a band for it would be many times what it hides.
TEST_F(RootBackground, IsAskedForWhereALineHidesItOnly)
{
    EXPECT_EQ(coloursOf(capture({0, 150, 320, 1})), (Colours{0xff123456}));
    for (const auto& event : takeEvents()) {
        if (eventType(*event) == XCB_CREATE_NOTIFY) {
            EXPECT_EQ(as<xcb_create_notify_event_t>(event).height, 1);
        }
    }
    EXPECT_EQ(coloursOf(capture({0, 151, 320, 1})), (Colours{0xff123456}));
    EXPECT_FALSE(takeEvents().empty());
}

}  // namespace
}  // namespace CaptureTests

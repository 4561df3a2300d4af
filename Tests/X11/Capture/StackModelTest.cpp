#include "Platform/X11/Capture/StackModel.h"

#include <gtest/gtest.h>
#include <xcb/shape.h>

#include <cstring>
#include <utility>

namespace CaptureTests {
namespace {

using Platform::X11::DeviceRect;

constexpr xcb_window_t root = 0x1e0;
constexpr xcb_window_t a = 0x400001;
constexpr xcb_window_t b = 0x400002;
constexpr xcb_window_t c = 0x600001;
constexpr std::uint32_t own = 0x200000;
constexpr std::uint8_t shapeNotify = 64;
constexpr xcb_atom_t opacity = 300;
constexpr xcb_atom_t wallpaper = 301;

class StackModel : public testing::Test {
protected:
    template <typename T> bool send(std::uint8_t type, T event)
    {
        event.response_type = type;
        xcb_generic_event_t generic{};
        static_assert(sizeof event <= sizeof generic);
        std::memcpy(&generic, &event, sizeof event);
        return m_model.handle(generic);
    }
    bool create(xcb_window_t window, const DeviceRect& r = {0, 0, 10, 10}, std::uint16_t border = 0)
    {
        xcb_create_notify_event_t event{};
        event.parent = root;
        event.window = window;
        event.x = static_cast<std::int16_t>(r.x);
        event.y = static_cast<std::int16_t>(r.y);
        event.width = static_cast<std::uint16_t>(r.width);
        event.height = static_cast<std::uint16_t>(r.height);
        event.border_width = border;
        return send(XCB_CREATE_NOTIFY, event);
    }
    bool configure(xcb_window_t window, xcb_window_t above, const DeviceRect& r = {0, 0, 10, 10}, std::uint16_t border = 0)
    {
        xcb_configure_notify_event_t event{};
        event.event = root;
        event.window = window;
        event.above_sibling = above;
        event.x = static_cast<std::int16_t>(r.x);
        event.y = static_cast<std::int16_t>(r.y);
        event.width = static_cast<std::uint16_t>(r.width);
        event.height = static_cast<std::uint16_t>(r.height);
        event.border_width = border;
        return send(XCB_CONFIGURE_NOTIFY, event);
    }
    bool map(xcb_window_t window)
    {
        xcb_map_notify_event_t event{};
        event.window = window;
        return send(XCB_MAP_NOTIFY, event);
    }
    bool unmap(xcb_window_t window)
    {
        xcb_unmap_notify_event_t event{};
        event.window = window;
        return send(XCB_UNMAP_NOTIFY, event);
    }
    bool reparent(xcb_window_t window, xcb_window_t parent)
    {
        xcb_reparent_notify_event_t event{};
        event.window = window;
        event.parent = parent;
        return send(XCB_REPARENT_NOTIFY, event);
    }
    bool circulate(xcb_window_t window, std::uint8_t place)
    {
        xcb_circulate_notify_event_t event{};
        event.window = window;
        event.place = place;
        return send(XCB_CIRCULATE_NOTIFY, event);
    }
    bool changeProperty(xcb_window_t window, xcb_atom_t atom)
    {
        xcb_property_notify_event_t event{};
        event.window = window;
        event.atom = atom;
        return send(XCB_PROPERTY_NOTIFY, event);
    }
    std::vector<xcb_window_t> order() const
    {
        std::vector<xcb_window_t> ids;
        for (const auto& window : m_model.windows())
            ids.push_back(window.id);
        return ids;
    }
    void createThree()
    {
        for (const auto window : {a, b, c})
            create(window);
    }
    using Order = std::vector<xcb_window_t>;

    Platform::X11::StackModel m_model{{root, own, 0x1fffff, shapeNotify, opacity, {wallpaper}}};
};

TEST_F(StackModel, PlacesNewWindowsOnTop)
{
    createThree();
    EXPECT_EQ(order(), (Order{a, b, c}));
}

TEST_F(StackModel, CountsTheBorderIntoTheFrame)
{
    create(a, {5, -6, 20, 10}, 3);
    EXPECT_EQ(m_model.find(a)->frame, (DeviceRect{5, -6, 26, 16}));
    EXPECT_EQ(m_model.find(a)->border, 3);
}

TEST_F(StackModel, RestacksAboveTheNamedSibling)
{
    createThree();
    configure(a, b);
    EXPECT_EQ(order(), (Order{b, a, c}));
    configure(c, b);
    EXPECT_EQ(order(), (Order{b, c, a}));
    configure(b, a);
    EXPECT_EQ(order(), (Order{c, a, b}));
}

TEST_F(StackModel, PlacesAWindowAboveNoneAtTheBottom)
{
    createThree();
    configure(c, XCB_WINDOW_NONE);
    EXPECT_EQ(order(), (Order{c, a, b}));
}

TEST_F(StackModel, CirculatesToTopAndBottom)
{
    createThree();
    circulate(a, XCB_PLACE_ON_TOP);
    EXPECT_EQ(order(), (Order{b, c, a}));
    circulate(c, XCB_PLACE_ON_BOTTOM);
    EXPECT_EQ(order(), (Order{c, b, a}));
}

TEST_F(StackModel, KeepsTheContentsWhenAWindowMovesOrIsRestacked)
{
    createThree();
    const auto before = m_model.find(a)->contents;
    EXPECT_TRUE(configure(a, c, {50, 60, 10, 10}));
    EXPECT_EQ(m_model.find(a)->contents, before);
    EXPECT_EQ(m_model.find(a)->frame, (DeviceRect{50, 60, 10, 10}));
}

TEST_F(StackModel, CountsMovesAndRestacksAsChangesButNotTheirRepetition)
{
    createThree();
    const auto isCounted = [this](auto&&... arguments) {
        const auto before = m_model.generation();
        const bool isChanged = configure(arguments...);
        EXPECT_EQ(isChanged, m_model.generation() != before);
        return isChanged;
    };
    EXPECT_TRUE(isCounted(b, a, DeviceRect{1, 0, 10, 10}));
    EXPECT_FALSE(isCounted(b, a, DeviceRect{1, 0, 10, 10}));
    EXPECT_TRUE(isCounted(b, c, DeviceRect{1, 0, 10, 10}));
    EXPECT_FALSE(isCounted(b, c, DeviceRect{1, 0, 10, 10}));
    EXPECT_TRUE(isCounted(b, c, DeviceRect{1, 0, 10, 11}));
}

TEST_F(StackModel, BelievesNoEventsThatAClientSent)
{
    createThree();
    map(a);
    xcb_unmap_notify_event_t event{};
    event.window = a;
    EXPECT_FALSE(send(XCB_UNMAP_NOTIFY | 0x80, event));
    EXPECT_TRUE(m_model.find(a)->isMapped);
    EXPECT_TRUE(send(XCB_UNMAP_NOTIFY, event));
    EXPECT_FALSE(m_model.find(a)->isMapped);
}

TEST_F(StackModel, NamesNewContentsAfterResizeBorderMapAndUnmap)
{
    create(a);
    auto last = m_model.find(a)->contents;
    const auto isNew = [&] { return std::exchange(last, m_model.find(a)->contents) != m_model.find(a)->contents; };
    configure(a, XCB_WINDOW_NONE, {0, 0, 11, 10});
    EXPECT_TRUE(isNew());
    configure(a, XCB_WINDOW_NONE, {0, 0, 9, 8}, 1);
    EXPECT_TRUE(isNew());
    map(a);
    EXPECT_TRUE(isNew());
    unmap(a);
    EXPECT_TRUE(isNew());
    EXPECT_FALSE(unmap(a));
    EXPECT_FALSE(isNew());
}

TEST_F(StackModel, ForgetsDestroyedAndReparentedWindows)
{
    createThree();
    xcb_destroy_notify_event_t event{};
    event.window = b;
    send(XCB_DESTROY_NOTIFY, event);
    reparent(a, 0x700000);
    EXPECT_EQ(order(), (Order{c}));
}

TEST_F(StackModel, PlacesWindowsThatComeBackToTheRootOnTopAndAsksForThem)
{
    createThree();
    m_model.find(a)->needsAttributes = false;
    reparent(a, root);
    EXPECT_EQ(order(), (Order{b, c, a}));
    EXPECT_TRUE(m_model.find(a)->needsAttributes);
    EXPECT_FALSE(m_model.find(a)->isMapped);
}

TEST_F(StackModel, IgnoresItsOwnAndTheServersWindows)
{
    EXPECT_FALSE(create(own + 5));
    EXPECT_FALSE(create(0x1ff));
    EXPECT_TRUE(order().empty());
}

TEST_F(StackModel, TakesAWindowAboveTheServersOwnForTheHighest)
{
    createThree();
    configure(a, 0x1ff);
    EXPECT_EQ(order(), (Order{b, c, a}));
    EXPECT_FALSE(m_model.isBroken());
}

TEST_F(StackModel, TakesAWindowAboveOneOfItsOwnForTheLowest)
{
    createThree();
    configure(c, own + 5);
    EXPECT_EQ(order(), (Order{c, a, b}));
}

TEST_F(StackModel, IsBrokenByAnUnknownSibling)
{
    createThree();
    configure(a, 0x7fffff);
    EXPECT_TRUE(m_model.isBroken());
    const auto before = m_model.generation();
    m_model.clear();
    EXPECT_FALSE(m_model.isBroken());
    EXPECT_TRUE(order().empty());
    EXPECT_NE(m_model.generation(), before);
}

TEST_F(StackModel, AsksAgainForOpacityAndShapeWhenTheyChange)
{
    create(a);
    map(a);
    auto* window = m_model.find(a);
    window->needsAttributes = window->needsShape = window->needsOpacity = false;
    EXPECT_FALSE(changeProperty(a, 1));
    EXPECT_FALSE(window->needsLearning());
    EXPECT_TRUE(changeProperty(a, opacity));
    EXPECT_TRUE(window->needsLearning());
    window->needsOpacity = false;
    xcb_shape_notify_event_t event{};
    event.shape_kind = XCB_SHAPE_SK_INPUT;
    event.affected_window = a;
    EXPECT_FALSE(send(shapeNotify, event));
    event.shape_kind = XCB_SHAPE_SK_BOUNDING;
    EXPECT_TRUE(send(shapeNotify, event));
    EXPECT_TRUE(window->needsLearning());
}

TEST_F(StackModel, FollowsGravityMoves)
{
    create(a);
    xcb_gravity_notify_event_t event{};
    event.window = a;
    event.x = 7;
    event.y = -8;
    EXPECT_TRUE(send(XCB_GRAVITY_NOTIFY, event));
    EXPECT_EQ(m_model.find(a)->frame, (DeviceRect{7, -8, 10, 10}));
}

TEST_F(StackModel, CountsWhatMayChangeTheRootBackground)
{
    const auto before = m_model.rootBackground();
    changeProperty(root, 5);
    EXPECT_EQ(m_model.rootBackground(), before);
    changeProperty(root, wallpaper);
    EXPECT_EQ(m_model.rootBackground(), before + 1);
    configure(root, XCB_WINDOW_NONE, {0, 0, 640, 480});
    EXPECT_EQ(m_model.rootBackground(), before + 2);
    EXPECT_EQ(m_model.root(), (DeviceRect{0, 0, 640, 480}));
}

}  // namespace
}  // namespace CaptureTests

#include "Platform/X11/Capture/ChangeWatch.h"

#include <gtest/gtest.h>

#include "Support/PrivateServer.h"
#include "X11/Capture/Desktop.h"

namespace CaptureTests {
namespace {

using namespace Platform::X11;

class ChangeWatch : public testing::Test {
protected:
    ChangeWatch()
    {
        m_window = m_desktop.makeMappedWindow({.inner = {50, 40, 100, 80}, .border = 3, .colour = 0x00ff00});
        m_desktop.sync();
        addWindow();
        followAgain();
    }

    void addWindow()
    {
        auto* window = m_model.add(m_window);
        ASSERT_NE(window, nullptr);
        window->needsAttributes = false;
        m_model.setGeometry(*window, {50, 40, 100, 80}, 3);
        m_model.setMapped(*window, true);
    }

    void follow()
    {
        m_watch.follow(m_model, {.top = m_model.windows().size(), .leftOut = {}});
        m_c.waitForServer();
    }
    // All that was told before is known.
    void followAgain()
    {
        follow();
        takeEvents();
        follow();
        m_watch.clear();
    }

    void draw(const DeviceRect& inWindow)
    {
        m_desktop.fill(m_window, inWindow, 0x0000ff);
        m_desktop.sync();
        m_c.waitForServer();
    }

    int takeEvents()
    {
        int count = 0;
        while (const auto event = Event(xcb_poll_for_event(m_c)))
            count += m_watch.handle(*event) ? 1 : 0;
        return count;
    }

    StackModel::Identifiers identifiers() const
    {
        const auto* setup = xcb_get_setup(m_c);
        StackModel::Identifiers identifiers;
        identifiers.root = m_c.root();
        identifiers.ownBase = setup->resource_id_base;
        identifiers.mask = setup->resource_id_mask;
        return identifiers;
    }

    TestSupport::PrivateServer m_server{"320x200x24"};
    Desktop m_desktop{m_server.displayName()};
    std::unique_ptr<CaptureServer> m_captureServer = CaptureServer::open(m_server.displayName());
    Connection& m_c = m_captureServer->connection();
    StackModel m_model{identifiers()};
    Platform::X11::ChangeWatch m_watch{*m_captureServer};
    xcb_window_t m_window = XCB_WINDOW_NONE;
};

TEST_F(ChangeWatch, TellsWhereOnTheScreenAWindowWasDrawnIn)
{
    EXPECT_FALSE(m_watch.touches(m_desktop.screen()));
    draw({10, 20, 5, 4});
    EXPECT_GE(takeEvents(), 1);
    EXPECT_FALSE(m_watch.hasAllChanged());
    EXPECT_TRUE(m_watch.touches({63, 63, 1, 1}));
    EXPECT_TRUE(m_watch.touches({67, 66, 1, 1}));
    EXPECT_FALSE(m_watch.touches({62, 63, 1, 1}));
    EXPECT_FALSE(m_watch.touches({68, 66, 1, 1}));
    EXPECT_FALSE(m_watch.touches({63, 67, 5, 100}));
}

TEST_F(ChangeWatch, TellsOfTheSamePlaceOnceUntilItFollowsAgain)
{
    for (int i = 0; i < 2; ++i) {
        draw({10, 20, 5, 4});
        EXPECT_EQ(takeEvents(), 1);
        draw({10, 20, 5, 4});
        EXPECT_EQ(takeEvents(), 0);
        draw({10, 20, 6, 4});
        EXPECT_EQ(takeEvents(), 1);
        EXPECT_TRUE(m_watch.touches({68, 66, 1, 1}));
        followAgain();
    }
}

// The news of what was drawn before were not taken, as when the stack is read anew, or
// another window has got the number.
TEST_F(ChangeWatch, HearsOfAWindowWithOtherContentsAgain)
{
    draw({0, 0, 100, 80});
    while (Event(xcb_poll_for_event(m_c))) { }
    m_model.clear();
    addWindow();
    follow();
    EXPECT_TRUE(m_watch.touches({60, 60, 1, 1}));
    followAgain();
    draw({10, 20, 5, 4});
    takeEvents();
    EXPECT_TRUE(m_watch.touches({63, 63, 1, 1}));
}

TEST_F(ChangeWatch, TellsThatAllHasChangedWhereWindowsLookOtherwise)
{
    auto* window = m_model.find(m_window);
    m_model.setGeometry(*window, {51, 40, 100, 80}, 3);
    follow();
    EXPECT_TRUE(m_watch.hasAllChanged());
    m_watch.clear();
    window->opacity = 0x80000000;
    follow();
    EXPECT_TRUE(m_watch.hasAllChanged());
    m_watch.clear();
    window->isShaped = true;
    window->shape = {{0, 0, 5, 5}};
    follow();
    EXPECT_TRUE(m_watch.hasAllChanged());
    m_watch.clear();
    window->shape = {{0, 0, 5, 6}};
    follow();
    EXPECT_TRUE(m_watch.hasAllChanged());
    m_watch.clear();
    m_model.countRootBackground();
    follow();
    EXPECT_TRUE(m_watch.hasAllChanged());
    m_watch.clear();
    m_model.setMapped(*window, false);
    follow();
    EXPECT_TRUE(m_watch.hasAllChanged());
    m_watch.clear();
    follow();
    EXPECT_FALSE(m_watch.hasAllChanged());
}

TEST_F(ChangeWatch, LeavesOutWhatIsAboveTheOverlayOrLeftOut)
{
    for (const auto& below : {BelowOverlay{.top = 0, .leftOut = {}}, BelowOverlay{.top = 1, .leftOut = {m_window}}}) {
        followAgain();
        m_watch.follow(m_model, below);
        m_c.waitForServer();
        takeEvents();
        draw({10, 20, 5, 4});
        EXPECT_EQ(takeEvents(), 0);
    }
}

}  // namespace
}  // namespace CaptureTests

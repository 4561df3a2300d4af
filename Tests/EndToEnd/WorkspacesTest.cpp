// The workspace that changes while an overlay is up.
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include <algorithm>
#include <thread>

#include "EndToEnd/ColouredWindow.h"
#include "EndToEnd/CrosshairScene.h"
#include "EndToEnd/EveryWindowManager.h"
#include "EndToEnd/ExpectedScreen.h"
#include "EndToEnd/LoupeScene.h"
#include "Support/Desktop/Workspaces.h"
#include "Support/WaitUntil.h"

using namespace TestSupport;
using Events = std::vector<std::string>;

namespace {

constexpr std::uint32_t first = 0;
constexpr std::uint32_t second = 1;

auto windowManagersWithWorkspaces()
{
    using enum WindowManagerKind;
    return testing::Values(openbox, openboxWithPicom, xfwm4, xfwm4WithCompositor, i3);
}

// Another workspace with another active window, on the scene's desktop, which is shown again.
class SecondWorkspace {
public:
    explicit SecondWorkspace(Scene& scene) : m_desktop(scene.desktop()), m_firstPicture(scene.beneath())
    {
        makeWorkspace(m_desktop, second);
        m_window.emplace(m_desktop.displayName(), "elsewhere", Platform::X11::DeviceRect{200, 150, 700, 500}, 4);
        m_window->activate();
        if (!waitUntil([&] { return m_window->isPaintedOn(m_desktop.screenshot()); }))
            throw std::runtime_error("the window of the second workspace is not painted");
        m_picture = m_desktop.screenshotAtRest();
        m_window->takeEvents();
        goBack();
        EXPECT_TRUE(scene.showsBeneath());
        scene.activeWindow().activate();
        scene.activeWindow().takeEvents();
    }

    // Both return once the screen shows it, beside the overlay, and has done so for a moment:
    // where windows are new, the program does not believe their shadows at once.
    void goTo() { show(second, m_picture); }
    void goBack() { show(first, m_firstPicture); }

    TestWindow& window() { return *m_window; }
    // The screen with it and no overlay.
    const Platform::Image& picture() const { return m_picture; }

private:
    void show(std::uint32_t workspace, const Platform::Image& picture)
    {
        switchToWorkspace(m_desktop, workspace);
        if (!waitUntil([&] { return m_desktop.screenshot().pixel(630, 480) == picture.pixel(630, 480); }))
            throw std::runtime_error("the screen does not show the workspace");
        std::this_thread::sleep_for(longRest);
    }

    Desktop& m_desktop;
    const Platform::Image& m_firstPicture;
    std::optional<TestWindow> m_window;
    Platform::Image m_picture;
};

class CrosshairOnWorkspaces : public testing::TestWithParam<WindowManagerKind> {
protected:
    // A line that rests cannot see what lies beneath it. It keeps the shadows that the
    // compositor drew there, and has none where windows are new, until it moves.
    static bool hasShadows() { return GetParam() == WindowManagerKind::xfwm4WithCompositor; }

    CrosshairScene scene{GetParam()};
    Desktop& desktop = scene.desktop();
    SecondWorkspace elsewhere{scene};
};

INSTANTIATE_TEST_SUITE_P(Under, CrosshairOnWorkspaces, windowManagersWithWorkspaces(), nameOfParameter);

TEST_P(CrosshairOnWorkspaces, InvertsWhatTheOneThatIsSwitchedToShows)
{
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsCrosshairAt(300, 300));
    elsewhere.goTo();
    if (!hasShadows()) {
        EXPECT_TRUE(scene.shows(withCrosshair(elsewhere.picture(), 300, 300)));
    }
    desktop.pointer().moveTo(850, 620);
    EXPECT_TRUE(scene.shows(withCrosshair(elsewhere.picture(), 850, 620)));
    elsewhere.goBack();
    if (!hasShadows()) {
        EXPECT_TRUE(scene.showsCrosshairAt(850, 620));
    }
    desktop.pointer().moveTo(301, 420);
    EXPECT_TRUE(scene.showsCrosshairAt(301, 420));
    scene.pressEscape();
    EXPECT_TRUE(scene.showsBeneath());
}

// The compositor paints the workspace some time after the window manager has switched to it.
TEST_P(CrosshairOnWorkspaces, InvertsWhatItShowsAlsoWhereThePointerMovesAtOnce)
{
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsCrosshairAt(300, 300));
    switchToWorkspace(desktop, second);
    desktop.pointer().moveTo(850, 620);
    if (!hasShadows()) {
        EXPECT_TRUE(scene.shows(withCrosshair(elsewhere.picture(), 850, 620)));
    }
    std::this_thread::sleep_for(longRest);
    desktop.pointer().moveTo(301, 420);
    EXPECT_TRUE(scene.shows(withCrosshair(elsewhere.picture(), 301, 420)));
}

TEST_P(CrosshairOnWorkspaces, KeepsTheKeyboard)
{
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsCrosshairAt(300, 300));
    elsewhere.goTo();
    desktop.pointer().moveTo(850, 620);
    ASSERT_TRUE(scene.shows(withCrosshair(elsewhere.picture(), 850, 620)));
    desktop.keyboard().tap(KEY_A);
    scene.pressEscape();
    EXPECT_TRUE(scene.shows(elsewhere.picture()));
    EXPECT_EQ(currentWorkspace(desktop), second);
    EXPECT_TRUE(waitUntil([&] { return desktop.focus() == elsewhere.window().id(); }));
    desktop.keyboard().tap(KEY_B);
    Events keys;
    EXPECT_TRUE(waitUntil([&] {
        for (auto& event : elsewhere.window().takeEvents()) {
            if (event.starts_with("Key"))
                keys.push_back(std::move(event));
        }
        return !keys.empty() && keys.back() == "KeyRelease 48";
    }));
    EXPECT_EQ(keys, (Events{"KeyPress 48", "KeyRelease 48"}));
    const auto former = scene.activeWindow().takeEvents();
    EXPECT_TRUE(std::none_of(former.begin(), former.end(), [](const std::string& event) { return event == "KeyPress 30" || event == "KeyPress 1"; }));
}

class LoupeOnWorkspaces : public testing::TestWithParam<WindowManagerKind> {
protected:
    LoupeScene scene{GetParam()};
    Desktop& desktop = scene.desktop();
    SecondWorkspace elsewhere{scene};
};

INSTANTIATE_TEST_SUITE_P(Under, LoupeOnWorkspaces, windowManagersWithWorkspaces(), nameOfParameter);

TEST_P(LoupeOnWorkspaces, MagnifiesWhatTheOneThatIsSwitchedToShows)
{
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsLoupeAt(300, 300));
    elsewhere.goTo();
    EXPECT_TRUE(scene.showsLoupeOver(elsewhere.picture(), {.x = 300, .y = 300}));
    desktop.pointer().moveTo(850, 620);
    EXPECT_TRUE(scene.showsLoupeOver(elsewhere.picture(), {.x = 850, .y = 620}));
    elsewhere.goBack();
    EXPECT_TRUE(scene.showsLoupeAt(850, 620));
    scene.pressEscape();
    EXPECT_TRUE(scene.showsBeneath());
}

}  // namespace

#include "EndToEnd/CrosshairScene.h"

#include <linux/input-event-codes.h>

#include <stdexcept>

#include "EndToEnd/ExpectedScreen.h"
#include "Support/Desktop/TestPattern.h"
#include "Support/Desktop/VisibleCursor.h"
#include "Support/WaitUntil.h"

namespace TestSupport {

CrosshairScene::CrosshairScene(WindowManagerKind kind, const TarnwickProgram::Environment& environment)
    : m_desktop(kind), m_wallpaper(m_desktop.displayName(), testPattern(1280, 800, 7)),
      m_other(m_desktop.displayName(), "other", {600, 330, 560, 380}, 2), m_active(m_desktop.displayName(), "active", {120, 90, 640, 420}, 1),
      m_program(m_desktop, environment)
{
    m_desktop.pointer().moveTo(300, 300);
    m_active.activate();
    m_program.waitUntilReady();
    if (!waitUntil([this] { return m_active.isPaintedOn(m_desktop.screenshot()); }))
        throw std::runtime_error("the active window is not painted");
    m_beneath = m_desktop.screenshotAtRest();
    m_active.takeEvents();
    m_other.takeEvents();
}

void CrosshairScene::pressShortcut() { m_desktop.keyboard().chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_X}); }

void CrosshairScene::pressEscape() { m_desktop.keyboard().tap(KEY_ESC); }

testing::AssertionResult CrosshairScene::showsCrosshairAt(int x, int y) { return shows(withCrosshair(m_beneath, x, y)); }

testing::AssertionResult CrosshairScene::showsNoCrosshair() { return shows(m_beneath); }

testing::AssertionResult CrosshairScene::shows(const Platform::Image& expected)
{
    Platform::Image actual;
    const auto isShown = [&] {
        actual = m_desktop.screenshot();
        return actual == expected;
    };
    if (waitUntil(isShown, std::chrono::seconds(5)))
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << difference(expected, actual).value_or("");
}

bool CrosshairScene::showsCursorAt(int x, int y)
{
    return waitUntil([&] { return showsVisibleCursor(m_desktop.frameBuffer().read(), x, y); }, std::chrono::seconds(5));
}

bool CrosshairScene::showsNoCursor()
{
    return waitUntil([&] { return visibleCursorPixels(m_desktop.frameBuffer().read()) == 0; }, std::chrono::seconds(5));
}

}  // namespace TestSupport

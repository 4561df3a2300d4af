#include "Tarnwick/CrosshairOverlay.h"

#include <utility>

namespace Tarnwick {

CrosshairOverlayWindow::CrosshairOverlayWindow(Platform::System& system, CaptureQueue& captureQueue, std::function<void()> dismissHandler)
    : m_screens(system.screens), m_dismissHandler(std::move(dismissHandler)),
      m_window(system.overlayWindows.makeOverlayWindow({.frame = takeScreenFrame(), .hasShadow = false}, *this)),
      m_contentView(std::make_shared<CrosshairView>(system.mainLoop, system.screens, system.screenCapture, captureQueue))
{
    m_contentView->setWindow(m_window.get());
    m_screensObservation = m_screens.observe([this] { m_window->setFrame(takeScreenFrame()); });
}

CrosshairOverlayWindow::~CrosshairOverlayWindow() { m_contentView->setWindow(nullptr); }

void CrosshairOverlayWindow::keyDown(const Platform::KeyEvent& event)
{
    if (event.keyCode == Platform::escapeKeyCode)
        m_dismissHandler();
}

void CrosshairOverlayWindow::dismissRequested() { m_dismissHandler(); }

Platform::Rect CrosshairOverlayWindow::takeScreenFrame()
{
    for (const auto& screen : m_screens.screens()) {
        if (screen.name == m_screenName)
            return screen.frame;
    }
    const auto screen = m_screens.mainScreen();
    if (!screen)
        return {};
    m_screenName = screen->name;
    return screen->frame;
}

}  // namespace Tarnwick

// The borderless window that covers the main screen while the crosshair is shown. It
// takes the keyboard and the clicks, and Escape asks its owner to dismiss it. Main
// thread only.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Platform.h"
#include "Tarnwick/CrosshairView.h"

namespace Tarnwick {

class CrosshairOverlayWindow final : private Platform::OverlayWindowDelegate {
public:
    // Covers the main screen; the empty rectangle at the origin where there is none. When
    // the screens change it follows the screen of that name, else the main screen.
    // `dismissHandler` may be called more than once.
    CrosshairOverlayWindow(Platform::System&, CaptureQueue&, std::function<void()> dismissHandler);
    ~CrosshairOverlayWindow() override;
    CrosshairOverlayWindow(const CrosshairOverlayWindow&) = delete;
    CrosshairOverlayWindow& operator=(const CrosshairOverlayWindow&) = delete;

    Platform::Rect frame() const { return m_window->frame(); }
    std::int64_t windowNumber() const { return m_window->windowNumber(); }
    CrosshairView& contentView() { return *m_contentView; }

    void makeKeyAndOrderFront() { m_window->makeKeyAndOrderFront(); }
    void orderOut() { m_window->orderOut(); }

private:
    void keyDown(const Platform::KeyEvent&) override;
    void dismissRequested() override;
    Platform::Rect takeScreenFrame();

    Platform::Screens& m_screens;
    std::optional<std::string> m_screenName;
    const std::function<void()> m_dismissHandler;
    const std::unique_ptr<Platform::OverlayWindow> m_window;
    const std::shared_ptr<CrosshairView> m_contentView;
    Platform::Token m_screensObservation;
};

}  // namespace Tarnwick

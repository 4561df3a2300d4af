// The floating window of the pixel loupe: a circle of magnified screen pixels around the
// pointer and a footer below it. It keeps the loupe's diameter and zoom in the user
// defaults, and takes the keyboard and the clicks that land on it. Main thread only.
#pragma once

#include <functional>
#include <memory>

#include "Platform/Platform.h"
#include "Tarnwick/LoupeOverlay.h"
#include "Tarnwick/LoupeView.h"
#include "Tarnwick/PersistentSetting.h"

namespace Tarnwick {

class LoupeOverlayWindow final : public LoupeOverlay, private Platform::OverlayWindowDelegate {
public:
    // Lies around the pointer from the start. `onDismiss` may be called more than once.
    LoupeOverlayWindow(Platform::System&, Platform::ShapePainter&, std::function<void()> onDismiss);
    ~LoupeOverlayWindow() override;
    LoupeOverlayWindow(const LoupeOverlayWindow&) = delete;
    LoupeOverlayWindow& operator=(const LoupeOverlayWindow&) = delete;

    // Fatal where diameter / zoom is no 64-bit number.
    void updateCursor(Platform::Point mouseLocation) override;
    void makeKeyAndOrderFront() override { m_window->makeKeyAndOrderFront(); }
    void orderOut() override { m_window->orderOut(); }

    Platform::Rect frame() const { return m_window->frame(); }
    std::int64_t windowNumber() const { return m_window->windowNumber(); }
    LoupeView& contentView() { return *m_contentView; }

private:
    void keyDown(const Platform::KeyEvent&) override;
    void dismissRequested() override;
    void adjustDiameter(double delta);
    void adjustZoom(double delta);
    void setContentSizeFromDiameter();
    void followPointer();
    double sampleSide() const;

    Platform::Pointer& m_pointer;
    PersistentSetting<double> m_diameter;
    PersistentSetting<double> m_zoom;
    const std::function<void()> m_dismissHandler;
    const std::unique_ptr<Platform::OverlayWindow> m_window;
    const std::shared_ptr<LoupeView> m_contentView;
};

}  // namespace Tarnwick

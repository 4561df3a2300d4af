// Overlay windows that record what they were asked to show, and through which a test
// presses keys and asks for dismissal.
//
// Lines, N being the window number: "overlayWindows.make N", "overlay N setFrame",
// "overlay N present", "overlay N makeKeyAndOrderFront", "overlay N orderOut",
// "overlay N close".
#pragma once

#include <string_view>
#include <vector>

#include "Platform/OverlayWindow.h"
#include "Support/CallLog.h"

namespace TestSupport {

// A copy of a presented picture.
struct ShownPicture {
    Platform::Rect rectangle;
    bool hasImage = false;
    Platform::Image image;
    std::uint32_t colour = 0;
};

class FakeOverlayWindows;

class FakeOverlayWindow : public Platform::OverlayWindow {
public:
    FakeOverlayWindow(FakeOverlayWindows&, std::int64_t windowNumber, const Platform::OverlayStyle&, Platform::OverlayWindowDelegate&);
    FakeOverlayWindow(const FakeOverlayWindow&) = delete;
    FakeOverlayWindow& operator=(const FakeOverlayWindow&) = delete;
    ~FakeOverlayWindow() override;

    const Platform::OverlayStyle& style() const { return m_style; }
    bool isShown() const { return m_isShown; }
    const std::vector<ShownPicture>& pictures() const { return m_pictures; }
    int presentCount() const { return m_presentCount; }
    // The window system can no longer keep the overlay above everything.
    void requestDismissal() { m_delegate.dismissRequested(); }
    void deliverKeyDown(const Platform::KeyEvent& event) { m_delegate.keyDown(event); }

    std::int64_t windowNumber() const override { return m_windowNumber; }
    Platform::Rect frame() const override { return m_frame; }
    void setFrame(const Platform::Rect&) override;
    void present(std::span<const Platform::Picture>) override;
    void makeKeyAndOrderFront() override;
    void orderOut() override;

private:
    void log(std::string_view what);

    FakeOverlayWindows& m_windows;
    const std::int64_t m_windowNumber;
    const Platform::OverlayStyle m_style;
    Platform::OverlayWindowDelegate& m_delegate;
    Platform::Rect m_frame;
    bool m_isShown = false;
    std::vector<ShownPicture> m_pictures;
    int m_presentCount = 0;
};

class FakeOverlayWindows : public Platform::OverlayWindows {
public:
    explicit FakeOverlayWindows(CallLog& log) : m_log(log) { }

    // The windows that exist, in the order of their making.
    const std::vector<FakeOverlayWindow*>& windows() const { return m_windows; }
    FakeOverlayWindow& last() { return *m_windows.at(m_windows.size() - 1); }
    // The shown windows from the lowest up.
    const std::vector<FakeOverlayWindow*>& shown() const { return m_shown; }

    // Goes to the key window; false when there is none.
    bool pressKey(const Platform::KeyEvent&);

    void setNextWindowNumber(std::int64_t number) { m_nextWindowNumber = number; }

    std::unique_ptr<Platform::OverlayWindow> makeOverlayWindow(const Platform::OverlayStyle&, Platform::OverlayWindowDelegate&) override;

private:
    friend class FakeOverlayWindow;

    CallLog& m_log;
    std::int64_t m_nextWindowNumber = 1;
    std::vector<FakeOverlayWindow*> m_windows;
    std::vector<FakeOverlayWindow*> m_shown;
};

}  // namespace TestSupport

// One overlay. See X11OverlayWindows.
#pragma once

#include <memory>
#include <vector>

#include "Platform/X11/Overlays/PictureWindow.h"
#include "Platform/X11/Overlays/X11OverlayWindows.h"

namespace Platform::X11 {

class X11OverlayWindow final : public OverlayWindow {
public:
    X11OverlayWindow(X11OverlayWindows&, const OverlayStyle&, OverlayWindowDelegate&, std::int64_t windowNumber);
    ~X11OverlayWindow() override;

    std::int64_t windowNumber() const override { return m_windowNumber; }
    Rect frame() const override { return m_frame; }
    void setFrame(const Rect&) override;
    void present(std::span<const Picture>) override;
    void makeKeyAndOrderFront() override { m_owner.orderFront(*this); }
    void orderOut() override { m_owner.orderOut(*this); }

    OverlayWindowDelegate& delegate() const { return m_delegate; }
    xcb_window_t catcher() const { return m_catcher; }
    bool consistsOf(xcb_window_t) const;
    OverlayEntry stackEntry() const;

    // A compositor came or went: what is presented next is shown in the format of now.
    void renewFormat() { m_isFormatOld = true; }

    // Mechanism for the owner; none of them flushes.
    void setShown(bool isShown);
    void raise();

private:
    using PictureWindows = std::vector<std::unique_ptr<PictureWindow>>;  // from the lowest up

    PictureFormat makeFormat();
    void freeColormap(const PictureFormat&);
    bool hasNewFormat();
    void show(std::span<const Picture>);
    void showInNewFormat(std::span<const Picture>);
    std::span<const DeviceRect> findColours(std::span<const Picture>);
    PictureWindow& pictureWindow(std::size_t index);
    DeviceRect deviceRectOf(const Rect& viewRect) const;

    X11OverlayWindows& m_owner;
    Connection& m_connection;
    OverlayWindowDelegate& m_delegate;
    const std::int64_t m_windowNumber;
    const bool m_isOutlined;
    Rect m_frame;
    DeviceRect m_deviceFrame;
    bool m_isShown = false;
    xcb_window_t m_catcher;
    PictureFormat m_format;
    bool m_isFormatOld = false;
    PictureWindows m_pictures;
    std::vector<DeviceRect> m_colours;
};

}  // namespace Platform::X11

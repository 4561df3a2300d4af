// Reads what lies below our overlays: the windows below are put together again in the
// server from their own contents, as the overlay was not there. On a connection of its
// own, so that errors about windows that other programs destroy meanwhile stay here.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "Platform/ScreenCapture.h"
#include "Platform/X11/Capture/CanvasMemory.h"
#include "Platform/X11/CaptureActivation.h"
#include "Platform/X11/OverlayStack.h"
#include "Platform/X11/SharedMonitorLayout.h"

namespace Platform::X11 {

class CaptureServer;
class CaptureSession;
enum class WindowContents;

class X11ScreenCapture : public ScreenCapture, public CaptureActivation {
public:
    // Nothing when no server answers. Layout and stack must outlive the capture. A server
    // that lets this client see no other window's pixels gives answers of truth `none`.
    static std::unique_ptr<X11ScreenCapture> open(
        const std::string& displayName, const SharedMonitorLayout&, const OverlayStack&, CanvasMemory = CanvasMemory::shared);
    ~X11ScreenCapture() override;

    // While inactive a capture activates for itself only, which costs several round trips.
    void windowsBelow(std::uint32_t windowNumber, CaptureResolution, std::span<const Rect> rectangles, std::span<Captured> answers) override;

    // Waits for a capture that runs.
    void activate() override;
    void activateBeforeContents() override;
    void keepContents(std::span<const CoveredPart>) override;
    void deactivate() override;

    // How often this object has waited for the server so far: once for each capture when
    // no window was new and none changed meanwhile; for one that had nothing new, never.
    std::uint64_t roundTrips() const;

private:
    X11ScreenCapture(std::unique_ptr<CaptureServer>, const SharedMonitorLayout&, const OverlayStack&);
    void activateLocked(WindowContents);

    mutable std::mutex m_mutex;
    std::unique_ptr<CaptureServer> m_server;
    const SharedMonitorLayout& m_layouts;
    const OverlayStack& m_stack;
    std::unique_ptr<CaptureSession> m_session;  // present while active
};

}  // namespace Platform::X11

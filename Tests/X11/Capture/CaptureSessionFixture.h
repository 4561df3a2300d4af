// A session of the capture on a private server.
#pragma once

#include <array>
#include <memory>
#include <utility>

#include "Platform/X11/Capture/CaptureSession.h"
#include "X11/Capture/CaptureSetting.h"
#include "X11/Capture/ServerResources.h"
#include "X11/Capture/TestedCanvasMemory.h"

namespace CaptureTests {

class CaptureSessionFixture : public CaptureSetting {
protected:
    using CaptureServer = Platform::X11::CaptureServer;

    void start()
    {
        m_session = std::make_unique<Platform::X11::CaptureSession>(*m_captureServer, m_layout, m_stack, Platform::X11::WindowContents::kept);
    }

    Captured captureNow(const Rect& rect, std::uint32_t number = 1)
    {
        std::array<Captured, 1> answers;
        m_session->capture(number, CaptureResolution::nominal, {&rect, 1}, answers);
        return std::move(answers[0]);
    }
    Captured captureSettled(const Rect& rect)
    {
        m_desktop.sync();
        return captureNow(rect);
    }

    Captured captureDuring(const Rect& rect, const std::function<void()>& changes)
    {
        return CaptureSetting::captureDuring([&] { return captureNow(rect); }, changes);
    }

    ServerResources resources() { return serverResources(m_captureServer->connection()); }

    // As a compositor is known to others.
    void takeCompositorSelection()
    {
        auto& c = m_desktop.connection();
        xcb_set_selection_owner(c, m_desktop.makeInputOnlyWindow({-9, -9, 1, 1}), c.atom("_NET_WM_CM_S0"), XCB_CURRENT_TIME);
        m_desktop.sync();
    }

    std::unique_ptr<CaptureServer> m_captureServer = CaptureServer::open(m_server.displayName(), testedCanvasMemory());
    std::unique_ptr<Platform::X11::CaptureSession> m_session;
};

}  // namespace CaptureTests

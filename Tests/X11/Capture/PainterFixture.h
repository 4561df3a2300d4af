// A painter, and windows that keep their contents for it, on a private server.
#pragma once

#include <gtest/gtest.h>
#include <xcb/composite.h>

#include <memory>

#include "Platform/X11/Capture/ImageReader.h"
#include "Platform/X11/Capture/Painter.h"
#include "Support/PrivateServer.h"
#include "X11/Capture/Desktop.h"
#include "X11/Capture/TestedCanvasMemory.h"

namespace CaptureTests {

class PainterFixture : public testing::Test {
protected:
    explicit PainterFixture(Platform::X11::CanvasMemory memory = testedCanvasMemory())
        : m_captureServer(Platform::X11::CaptureServer::open(m_server.displayName(), memory))
    {
        xcb_composite_redirect_subwindows(m_c, m_c.root(), XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    }

    // The part of the window from `source` on shows in the area.
    Platform::X11::PaintStep stepFor(xcb_window_t window, const DeviceRect& area = {0, 0, 10, 10}, DevicePoint source = {}) const
    {
        Platform::X11::PaintStep step;
        step.window = window;
        step.contents = 1;
        step.visual = m_c.screen().root_visual;
        step.depth = m_c.screen().root_depth;
        step.area = area;
        step.source = source;
        return step;
    }

    xcb_window_t window(std::uint32_t colour, const DeviceRect& frame = {0, 0, 10, 10})
    {
        return m_desktop.makeMappedWindow({.inner = frame, .colour = colour});
    }

    TestSupport::PrivateServer m_server{"320x200x24"};
    Desktop m_desktop{m_server.displayName()};
    std::unique_ptr<Platform::X11::CaptureServer> m_captureServer;
    Platform::X11::Connection& m_c = m_captureServer->connection();
    Platform::X11::Painter m_painter{*m_captureServer};
    Platform::X11::ImageReader m_images{*m_captureServer};
};

}  // namespace CaptureTests

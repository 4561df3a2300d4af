// A private server with a capture on it and an overlay or two for the tests.
#pragma once

#include <gtest/gtest.h>

#include <unistd.h>

#include <array>
#include <atomic>
#include <fstream>
#include <functional>
#include <memory>
#include <set>
#include <sstream>
#include <thread>
#include <utility>

#include "Platform/X11/Capture/X11ScreenCapture.h"
#include "Support/PrivateServer.h"
#include "Support/WaitUntil.h"
#include "X11/Capture/Desktop.h"
#include "X11/Capture/TestedCanvasMemory.h"

namespace CaptureTests {

class CaptureSetting : public testing::Test {
protected:
    using Captured = Platform::Captured;
    using CaptureResolution = Platform::CaptureResolution;
    using Rect = Platform::Rect;
    using Colours = std::set<std::uint32_t>;

    explicit CaptureSetting(const std::vector<std::string>& serverArguments = {}) : m_server("320x200x24", serverArguments) { }

    void SetUp() override { useMonitors({{"MAIN", m_desktop.screen(), 1}}); }

    void useMonitors(std::vector<Platform::X11::Monitor> monitors) { m_layout.set(Platform::X11::MonitorLayout(std::move(monitors))); }

    Captured capture(const Rect& rect, std::uint32_t number = 1, CaptureResolution resolution = CaptureResolution::nominal)
    {
        m_desktop.sync();
        std::array<Captured, 1> answers;
        m_capture->windowsBelow(number, resolution, {&rect, 1}, answers);
        return std::move(answers[0]);
    }

    // The changes happen when the capture has asked everything and the server has answered
    // nothing: it serves this client alone until they are done.
    Captured captureDuring(const std::function<Captured()>& capture, const std::function<void()>& changes)
    {
        m_desktop.sync();
        xcb_grab_server(m_desktop.connection());
        m_desktop.sync();
        std::atomic<pid_t> thread = 0;
        Captured captured;
        std::thread capturing([&] {
            thread = gettid();
            captured = capture();
        });
        EXPECT_TRUE(TestSupport::waitUntil([&] { return thread != 0 && waits(thread); }));
        changes();
        xcb_ungrab_server(m_desktop.connection());
        m_desktop.sync();
        capturing.join();
        return captured;
    }

    static Colours coloursOf(const Image& image) { return {image.pixels().begin(), image.pixels().end()}; }
    static Colours coloursOf(const Captured& captured) { return coloursOf(captured.image); }

    static Image tileOf(std::uint32_t colour)
    {
        Image tile(1, 1);
        tile.pixels()[0] = colour;
        return tile;
    }

    // An overlay of one window, shown.
    xcb_window_t showOverlay(std::uint32_t number, const DeviceRect& frame)
    {
        const auto window = m_desktop.makeWindow({.inner = frame, .colour = overlayColour});
        auto& c = m_desktop.connection();
        const std::uint32_t none = 0;
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, c.atom("_COMPTON_SHADOW"), XCB_ATOM_CARDINAL, 32, 1, &none);
        m_desktop.map(window);
        m_entries.push_back({number, {{window, frame}}, XCB_WINDOW_NONE});
        m_stack.set(m_entries);
        return window;
    }

    static constexpr std::uint32_t overlayColour = 0x112233;

    TestSupport::PrivateServer m_server;
    Desktop m_desktop{m_server.displayName()};
    Platform::X11::SharedMonitorLayout m_layout;
    Platform::X11::OverlayStack m_stack;
    std::vector<Platform::X11::OverlayEntry> m_entries;
    std::unique_ptr<Platform::X11::X11ScreenCapture> m_capture =
        Platform::X11::X11ScreenCapture::open(m_server.displayName(), m_layout, m_stack, testedCanvasMemory());

private:
    // Sleeps, and goes on sleeping.
    static bool waits(pid_t thread)
    {
        for (int i = 0; i < 10; ++i) {
            std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
            std::stringstream text;
            text << file.rdbuf();
            if (text.str().find(") S ") == std::string::npos)
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }
};

}  // namespace CaptureTests

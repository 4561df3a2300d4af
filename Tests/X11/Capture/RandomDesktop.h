// Windows that change at random, on a server and in the model of its screen alike.
#pragma once

#include <random>
#include <string>

#include "Platform/X11/OverlayStack.h"
#include "X11/Capture/ScreenModel.h"

namespace CaptureTests {

class RandomDesktop {
public:
    RandomDesktop(Desktop&, Platform::X11::OverlayStack&, bool hasCompositor, std::uint32_t seed);

    // One to four changes.
    void change();
    // Moves both overlays to a pointer somewhere on the screen.
    void moveOverlays();
    void raiseOverlays();

    int random(int from, int to) { return std::uniform_int_distribution<int>(from, to)(m_generator); }
    const ScreenModel& model() const { return m_model; }
    DevicePoint pointer() const { return m_pointer; }

    static constexpr std::uint32_t crosshair = 1;
    static constexpr std::uint32_t square = 2;
    // What a capture below an overlay must show.
    Image expected(std::uint32_t windowNumber, const DeviceRect& area) const;
    // True when no window of another program lies above the overlays.
    bool overlaysAreOnTop() const;
    void setOverlaysMapped(bool);
    // The last changes, to be read when a check fails.
    const std::string& history() const { return m_history; }

private:
    std::uint32_t randomColour(bool isArgb);
    Image randomTile(bool isArgb);
    DeviceRect randomFrame();
    bool keepOutOfDoubt(ModelWindow&) const;
    ModelWindow& randomWindow();
    void changeOnce();
    void make();
    void destroy();
    void move();
    void resize();
    void setBorder();
    void toggleMapped();
    void restack();
    void reshape();
    void setOpacity();
    void repaint();
    void reparent();
    void setRoot();
    void note(const char* what, xcb_window_t);
    void showOverlay(std::size_t index, const DeviceRect& frame);

    Desktop& m_desktop;
    Platform::X11::OverlayStack& m_stack;
    ScreenModel m_model;
    std::mt19937 m_generator;
    std::vector<xcb_window_t> m_overlays;  // row, column, square
    std::set<xcb_window_t> m_settled;      // mapped before the present changes
    DevicePoint m_pointer;
    std::string m_history;
};

}  // namespace CaptureTests

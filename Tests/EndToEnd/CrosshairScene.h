// A desktop with a wallpaper, an active window, a second one, and the program, ready for
// its hot key; and the steps that most tests take.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "EndToEnd/TarnwickProgram.h"
#include "Platform/Image.h"
#include "Support/Desktop/Desktop.h"
#include "Support/Desktop/TestWindow.h"
#include "Support/Desktop/Wallpaper.h"

namespace TestSupport {

class CrosshairScene {
public:
    explicit CrosshairScene(WindowManagerKind, const TarnwickProgram::Environment& = {});

    Desktop& desktop() { return m_desktop; }
    TestWindow& activeWindow() { return m_active; }
    TestWindow& otherWindow() { return m_other; }
    TarnwickProgram& program() { return m_program; }

    // The screen as it was when the program was ready.
    const Platform::Image& beneath() const { return m_beneath; }

    void pressShortcut();
    void pressEscape();

    // Success once the screen shows exactly what lies beneath with the crosshair at that
    // device pixel, without one, or that picture; it waits for that.
    testing::AssertionResult showsCrosshairAt(int x, int y);
    testing::AssertionResult showsNoCrosshair();

    // Whether a monitor would show the pointer's picture there, or none anywhere; it waits for that.
    bool showsCursorAt(int x, int y);
    bool showsNoCursor();

    testing::AssertionResult shows(const Platform::Image&);

private:
    Desktop m_desktop;
    Wallpaper m_wallpaper;
    TestWindow m_other;
    TestWindow m_active;
    TarnwickProgram m_program;
    Platform::Image m_beneath;
};

}  // namespace TestSupport

// A desktop with a wallpaper, an active window, a second one, and the program, ready for
// its hot keys; and the steps that most tests take.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "EndToEnd/TarnwickProgram.h"
#include "Platform/Image.h"
#include "Platform/X11/MonitorLayout.h"
#include "Support/Desktop/Desktop.h"
#include "Support/Desktop/TestWindow.h"
#include "Support/Desktop/Wallpaper.h"

namespace TestSupport {

struct SceneOptions {
    WindowManagerKind windowManager = WindowManagerKind::none;
    TarnwickProgram::Environment environment;
    std::string settings;  // the file's contents; none where empty
    int width = 1280;
    int height = 800;
    std::vector<Platform::X11::Monitor> monitors;  // the first is the primary; the server's own where empty
    std::vector<std::string> serverArguments;      // further ones
};

class Scene {
public:
    explicit Scene(const SceneOptions&);

    Desktop& desktop() { return m_desktop; }
    TestWindow& activeWindow() { return m_active; }
    TestWindow& otherWindow() { return m_other; }
    TarnwickProgram& program() { return *m_program; }

    // The screen as it was when the program was ready.
    const Platform::Image& beneath() const { return m_beneath; }

    void pressEscape();
    // Ends the program as a session does, and starts it with the settings that it left.
    void restartProgram();

    // Success once the screen shows exactly that; it waits for that.
    testing::AssertionResult shows(const Platform::Image&);
    testing::AssertionResult showsBeneath() { return shows(m_beneath); }

    // Returns that result once the overlays have the keys, too, which come after the picture.
    testing::AssertionResult withKeys(const testing::AssertionResult&);

    // Whether a monitor would show the pointer's picture there, or none anywhere; it waits for that.
    bool showsCursorAt(int x, int y);
    bool showsNoCursor();

    // Whether the program takes away its overlays' windows, also where something above hides
    // them; it waits for that.
    bool takesOverlaysAway();

    // All events of the active window up to the wanted last one, which must arrive. Modifier
    // keys are left out: alone they do nothing, so the overlays let them pass, and those of
    // the shortcut come before one is up.
    std::vector<std::string> eventsUpTo(const std::string& last);

protected:
    // Success once what is wrong with a picture of the screen is nothing; it waits for that.
    template <typename WhatIsWrong> testing::AssertionResult showsWithout(WhatIsWrong&& whatIsWrong)
    {
        std::optional<std::string> wrong;
        const auto isRight = [&] {
            wrong = whatIsWrong(m_desktop.screenshot());
            return !wrong;
        };
        if (waitForPicture(isRight))
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << wrong.value_or("");
    }

private:
    static bool waitForPicture(const std::function<bool()>& isRight);

    const SceneOptions m_options;
    Desktop m_desktop;
    Wallpaper m_wallpaper;
    TestWindow m_other;
    TestWindow m_active;
    std::optional<TarnwickProgram> m_program;
    Platform::Image m_beneath;
};

}  // namespace TestSupport

// The scene of tests in which the crosshair is shown.
#pragma once

#include "EndToEnd/Scene.h"

namespace TestSupport {

class CrosshairScene : public Scene {
public:
    explicit CrosshairScene(const SceneOptions& options) : Scene(options) { }
    explicit CrosshairScene(WindowManagerKind kind, const TarnwickProgram::Environment& environment = {})
        : CrosshairScene(SceneOptions{.windowManager = kind, .environment = environment})
    {
    }

    void pressShortcut();

    // Success once the screen shows exactly what lies beneath with the crosshair at that
    // device pixel, or without one; it waits for that.
    testing::AssertionResult showsCrosshairAt(int x, int y);
    testing::AssertionResult showsNoCrosshair() { return showsBeneath(); }
};

}  // namespace TestSupport

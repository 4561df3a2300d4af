// The scene of tests in which the loupe is shown.
#pragma once

#include "EndToEnd/ExpectedLoupe.h"
#include "EndToEnd/Scene.h"

namespace TestSupport {

class LoupeScene : public Scene {
public:
    explicit LoupeScene(const SceneOptions& options) : Scene(options), m_isBlended(isCompositing(options.windowManager)) { }
    explicit LoupeScene(WindowManagerKind kind) : LoupeScene(SceneOptions{.windowManager = kind}) { }

    // By a compositor.
    bool isBlended() const { return m_isBlended; }

    void pressShortcut();
    void tapTimes(std::uint16_t key, int times);

    // Success once the screen shows the loupe around that device pixel, as magnifying
    // exactly what lies there beneath, and all else as it was; it waits for that.
    testing::AssertionResult showsLoupe(ExpectedLoupe);
    testing::AssertionResult showsLoupeAt(int x, int y) { return showsLoupe({.x = x, .y = y}); }
    // The same where something else lies beneath by now.
    testing::AssertionResult showsLoupeOver(const Platform::Image& beneath, ExpectedLoupe);

private:
    static bool isCompositing(WindowManagerKind);

    const bool m_isBlended;
};

}  // namespace TestSupport

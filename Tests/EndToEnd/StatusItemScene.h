// The scene of tests of the icon in the tray: a desktop whose overlays are looked at away
// from the panel, and the program with settings and a session bus of the test's.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

#include "EndToEnd/TarnwickProgram.h"
#include "Platform/Image.h"
#include "Support/Desktop/Desktop.h"
#include "Support/Desktop/TestPattern.h"
#include "Support/Desktop/Wallpaper.h"

namespace TestSupport {

// Contents of the settings file.
inline constexpr auto crosshairMode = R"({"tarnwick.statusItemAction": "crosshair"})";
inline constexpr auto loupeMode = R"({"tarnwick.statusItemAction": "loupe"})";
inline constexpr auto hiddenIcon = R"({"tarnwick.showMenuBarItem": false})";

struct StatusItemScene : testing::Test {
    Desktop desktop{WindowManagerKind::openbox};
    Wallpaper wallpaper{desktop.displayName(), testPattern(1280, 800, 7)};
    Platform::Image beneath;  // the screen before the program was started
    std::optional<TarnwickProgram> program;

    void writeSettings(const std::string& contents) const;
    // Returns when the program is ready. Without settings it starts with those that are there.
    void start(const std::string& busAddress, const std::string& settings = {});

    void pressCrosshairShortcut();
    void pressLoupeShortcut();

    // Each waits for it, with the pointer there or in the middle of the screen.
    bool showsCrosshair(int x = 600, int y = 400);
    bool showsLoupe();
    bool showsNothing();

    // Waits for it in vain for a second only.
    bool opensAMenu();
    // Waits for the menu and closes it.
    void closeMenu();

    bool isCrosshairShortcutFree() const;
};

}  // namespace TestSupport

// A desktop with a landscape, a page and a colour chart on which the program is shown, and
// what each show does there: look, say, photograph.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "EndToEnd/TarnwickProgram.h"
#include "Platform/Image.h"
#include "Platform/X11/MonitorLayout.h"
#include "Support/Desktop/Desktop.h"
#include "Support/Desktop/TestWindow.h"
#include "Support/Desktop/Wallpaper.h"

namespace Demonstration {

class Stage {
protected:
    // Returns when the page has the focus and the program answers to its keys.
    Stage(std::filesystem::path folder, TestSupport::WindowManagerKind, Platform::X11::DevicePoint pointer);

    void moveTo(Platform::X11::DevicePoint);
    void tap(std::uint16_t evdevCode) { m_desktop.keyboard().tap(evdevCode); }

    // Says it, and remembers when something was not as it should be.
    void say(const std::string& what, bool isTrue);
    void sayWhetherTheDesktopIsBack(const std::string& what);
    void sayWhetherThePointerIsHidden();

    // What a monitor shows, and a part of that without the pointer's picture.
    void photograph(const std::string& name) const;
    void photograph(const std::string& name, const Platform::X11::DeviceRect& part) const;

    // What reached the windows since the last call, but for modifier keys: alone they do
    // nothing, so overlays let them pass, and those of the shortcut come before one is up.
    std::vector<std::string> takeEvents();

    // Whether all went as it should, the program's end included.
    bool end();

    TestSupport::Desktop& desktop() { return m_desktop; }
    Platform::X11::DevicePoint pointer() const { return m_position; }
    const Platform::Image& beneath() const { return m_beneath; }
    const std::filesystem::path& folder() const { return m_folder; }

private:
    bool showsCursor() const;

    const std::filesystem::path m_folder;
    TestSupport::Desktop m_desktop;
    const TestSupport::Wallpaper m_wallpaper;
    TestSupport::TestWindow m_chart;
    TestSupport::TestWindow m_page;
    TestSupport::TarnwickProgram m_program;
    Platform::X11::DevicePoint m_position;
    Platform::Image m_beneath;
    bool m_isAllRight = true;
};

}  // namespace Demonstration

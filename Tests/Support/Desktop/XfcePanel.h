// A real panel (xfce4-panel) along the top of the screen, with nothing but its tray,
// which shows icons that come over D-Bus.
#pragma once

#include "Platform/X11/MonitorLayout.h"
#include "Support/Desktop/Desktop.h"
#include "Support/Desktop/PrivateBus.h"

namespace TestSupport {

class XfcePanel {
public:
    // Where it lies.
    static constexpr Platform::X11::DeviceRect frame{0, 0, 1280, 32};

    // Returns when programs on its bus can find it. Throws when it does not come up.
    explicit XfcePanel(Desktop&);

    const std::string& busAddress() const { return m_bus.address(); }

private:
    std::filesystem::path m_home;
    Process::Options m_options;
    PrivateBus m_bus;
    Process m_process;
};

}  // namespace TestSupport

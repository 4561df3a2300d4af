// A real system tray (trayer), in which programs embed windows of their own (XEmbed), in
// the top right corner of the screen.
#pragma once

#include "Platform/X11/MonitorLayout.h"
#include "Support/Desktop/Desktop.h"

namespace TestSupport {

class Trayer {
public:
    // Where it lies.
    static constexpr Platform::X11::DeviceRect frame{1120, 0, 160, 24};

    // Returns when programs can find it. Throws when it does not come up.
    explicit Trayer(Desktop&);

private:
    Process m_process;
};

}  // namespace TestSupport

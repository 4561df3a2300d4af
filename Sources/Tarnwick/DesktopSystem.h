// The implementations of the seam that this program runs on, put together: X11 for
// windows, keys and pixels, the freedesktop conventions for settings, Qt for the loop.
#pragma once

#include <memory>

#include "Platform/Platform.h"
#include "Platform/Posix/FileDescriptorWatcher.h"

namespace Tarnwick {

class DesktopSystem {
public:
    // Needs a QApplication. Nothing where the X server cannot be used; one line on
    // standard error then says why.
    static std::unique_ptr<DesktopSystem> open();
    ~DesktopSystem();

    Platform::System system();
    Platform::FileDescriptorWatcher& fileDescriptorWatcher();

private:
    struct Parts;

    explicit DesktopSystem(std::unique_ptr<Parts>);

    const std::unique_ptr<Parts> m_parts;
};

}  // namespace Tarnwick

// The memory that Xvfb's screen is kept in (-fbdir): what a monitor would show, the
// pointer's picture included, which no client can read.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Platform/Image.h"
#include "Platform/X11/MonitorLayout.h"
#include "Support/TemporaryFolder.h"

namespace TestSupport {

class FrameBuffer {
public:
    // What the server must be started with to keep its memory here.
    std::vector<std::string> serverArguments() const { return {"-fbdir", m_folder.path()}; }

    // A picture of this moment, which may lie in the midst of the server's drawing. All
    // pixels opaque. Throws when there is no server.
    Platform::Image read() const;
    // The same of a part of the screen, at once while the server is busy with a client.
    Platform::Image read(const Platform::X11::DeviceRect& part) const;

private:
    TemporaryFolder m_folder{parentFolder()};

    static std::filesystem::path parentFolder();
};

}  // namespace TestSupport

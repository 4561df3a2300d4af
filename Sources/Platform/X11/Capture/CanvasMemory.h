// Where the capture paints.
#pragma once

namespace Platform::X11 {

enum class CanvasMemory {
    shared,   // with us, where the server allows that
    servers,  // the server's own; all that one has to offer which draws with a graphics card
};

}  // namespace Platform::X11

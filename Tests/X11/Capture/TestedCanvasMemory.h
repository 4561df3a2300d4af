// Where the captures of these tests paint. Every server that tests run on shares canvases;
// in a second run of the tests they do as if none did.
#pragma once

#include <cstdlib>
#include <string_view>

#include "Platform/X11/Capture/CanvasMemory.h"

namespace CaptureTests {

inline Platform::X11::CanvasMemory testedCanvasMemory()
{
    const char* memory = std::getenv("TARNWICK_TEST_CANVASES");
    const bool isServers = memory != nullptr && std::string_view(memory) == "servers";
    return isServers ? Platform::X11::CanvasMemory::servers : Platform::X11::CanvasMemory::shared;
}

}  // namespace CaptureTests

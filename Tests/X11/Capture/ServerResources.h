// What the server holds for one client, by kind: "PIXMAP", "PICTURE", "GC", ... (X-Resource).
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "Platform/X11/Connection.h"

namespace CaptureTests {

using ServerResources = std::map<std::string, std::uint32_t>;

// Asks about the client of `client` itself, once the server has done what it was asked.
// Throws when the server cannot tell.
ServerResources serverResources(Platform::X11::Connection& client);

}  // namespace CaptureTests

// The screen as clients can read it: every window, without the pointer's picture. In
// device pixels of the X screen; all pixels opaque.
#pragma once

#include "Platform/Image.h"
#include "Platform/X11/Connection.h"

namespace TestSupport {

// The whole root window. Throws when the connection is broken.
Platform::Image screenshot(const Platform::X11::Connection&);

}  // namespace TestSupport

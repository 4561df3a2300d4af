// A picture on the root window, as wallpaper programs leave it: as background and under
// the names by which compositors find it. It lives as long as the object.
#pragma once

#include <string>

#include "Platform/Image.h"
#include "Platform/X11/Connection.h"

namespace TestSupport {

class Wallpaper {
public:
    Wallpaper(const std::string& displayName, const Platform::Image&);

private:
    std::unique_ptr<Platform::X11::Connection> m_connection;
};

}  // namespace TestSupport

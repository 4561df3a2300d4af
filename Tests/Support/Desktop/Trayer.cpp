#include "Support/Desktop/Trayer.h"

#include <stdexcept>

#include "Support/WaitUntil.h"

namespace TestSupport {

using namespace Platform::X11;

namespace {

bool hasTray(Connection& connection)
{
    const auto cookie = xcb_get_selection_owner(connection, connection.atom("_NET_SYSTEM_TRAY_S0"));
    const auto reply = adopt(xcb_get_selection_owner_reply(connection, cookie, nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

}  // namespace

Trayer::Trayer(Desktop& desktop)
{
    Process::Options options;
    options.environment.emplace_back("HOME", desktop.home().string());
    options.standardError = desktop.home() / "trayer.log";
    m_process = desktop.server().start({"trayer", "--edge", "top", "--align", "right", "--widthtype", "pixel", "--width", "160", "--heighttype",
                                           "pixel", "--height", "24", "--SetDockType", "true"},
        options);
    if (!waitUntil([&] { return hasTray(desktop.connection()); }))
        throw std::runtime_error("trayer does not come up; see " + options.standardError);
}

}  // namespace TestSupport

#include "Support/Desktop/Desktop.h"

#include <stdexcept>

#include "Support/Desktop/Screenshot.h"
#include "Support/WaitUntil.h"

namespace TestSupport {

using namespace Platform::X11;

namespace {

std::vector<std::string> joined(std::vector<std::string> arguments, const std::vector<std::string>& further)
{
    arguments.insert(arguments.end(), further.begin(), further.end());
    return arguments;
}

}  // namespace

Desktop::Desktop(WindowManagerKind kind, const std::string& screen, const std::vector<std::string>& furtherServerArguments)
    : m_server(screen, joined(m_frameBuffer.serverArguments(), furtherServerArguments)), m_connection(Connection::open(m_server.displayName())),
      m_windowManager(m_server, kind, m_home.path()), m_keyboard(m_server.displayName()), m_pointer(m_server.displayName())
{
    if (!m_connection)
        throw std::runtime_error("no X server at " + m_server.displayName());
}

Platform::Image Desktop::screenshot() const { return TestSupport::screenshot(*m_connection); }

Platform::Image Desktop::screenshotAtRest() const
{
    using Clock = std::chrono::steady_clock;
    constexpr auto longEnough = std::chrono::milliseconds(300);
    auto picture = screenshot();
    auto unchangedSince = Clock::now();
    const auto hasComeToRest = [&] {
        if (auto next = screenshot(); next != picture) {
            picture = std::move(next);
            unchangedSince = Clock::now();
        }
        return Clock::now() - unchangedSince > longEnough;
    };
    if (!waitUntil(hasComeToRest))
        throw std::runtime_error("the screen does not come to rest");
    return picture;
}

xcb_window_t Desktop::focus() const
{
    const auto reply = adopt(xcb_get_input_focus_reply(*m_connection, xcb_get_input_focus(*m_connection), nullptr));
    return reply ? reply->focus : xcb_window_t{XCB_WINDOW_NONE};
}

xcb_window_t Desktop::activeWindow()
{
    auto& connection = *m_connection;
    const auto cookie = xcb_get_property(connection, 0, connection.root(), connection.atom("_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW, 0, 1);
    const auto reply = adopt(xcb_get_property_reply(connection, cookie, nullptr));
    if (!reply || xcb_get_property_value_length(reply.get()) != 4)
        return XCB_WINDOW_NONE;
    return *static_cast<const xcb_window_t*>(xcb_get_property_value(reply.get()));
}

}  // namespace TestSupport

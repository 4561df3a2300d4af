#include "Support/Desktop/Workspaces.h"

#include <stdexcept>

#include "Support/WaitUntil.h"

namespace TestSupport {

using namespace Platform::X11;

namespace {

void askWindowManager(Connection& connection, const char* what, std::uint32_t value)
{
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = connection.root();
    message.type = connection.atom(what);
    message.data.data32[0] = value;
    xcb_send_event(connection, 0, connection.root(), XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
        reinterpret_cast<const char*>(&message));
    connection.flush();
}

std::uint32_t numberOfRoot(Connection& connection, const char* property)
{
    const auto cookie = xcb_get_property(connection, 0, connection.root(), connection.atom(property), XCB_ATOM_CARDINAL, 0, 1);
    const auto reply = adopt(xcb_get_property_reply(connection, cookie, nullptr));
    if (!reply || xcb_get_property_value_length(reply.get()) != 4)
        return 0;
    return *static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
}

bool isI3(Connection& connection)
{
    const auto cookie = xcb_get_property(connection, 0, connection.root(), connection.atom("I3_SOCKET_PATH"), XCB_ATOM_ANY, 0, 0);
    const auto reply = adopt(xcb_get_property_reply(connection, cookie, nullptr));
    return reply && reply->type != XCB_ATOM_NONE;
}

void waitUntilCurrent(Desktop& desktop, std::uint32_t number)
{
    if (!waitUntil([&] { return currentWorkspace(desktop) == number; }))
        throw std::runtime_error("the window manager does not go to workspace " + std::to_string(number));
}

}  // namespace

void makeWorkspace(Desktop& desktop, std::uint32_t number)
{
    auto& connection = desktop.connection();
    if (isI3(connection)) {
        desktop.server().start({"i3-msg", "--quiet", "workspace", "number", std::to_string(number + 1)}).waitForExit(std::chrono::seconds(10));
        waitUntilCurrent(desktop, number);
        return;
    }
    if (numberOfRoot(connection, "_NET_NUMBER_OF_DESKTOPS") <= number)
        askWindowManager(connection, "_NET_NUMBER_OF_DESKTOPS", number + 1);
    if (!waitUntil([&] { return numberOfRoot(connection, "_NET_NUMBER_OF_DESKTOPS") > number; }))
        throw std::runtime_error("the window manager does not make workspace " + std::to_string(number));
    switchToWorkspace(desktop, number);
}

void switchToWorkspace(Desktop& desktop, std::uint32_t number)
{
    askWindowManager(desktop.connection(), "_NET_CURRENT_DESKTOP", number);
    waitUntilCurrent(desktop, number);
}

std::uint32_t currentWorkspace(Desktop& desktop) { return numberOfRoot(desktop.connection(), "_NET_CURRENT_DESKTOP"); }

}  // namespace TestSupport

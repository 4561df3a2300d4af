#include "Support/Desktop/Monitors.h"

#include <sys/uio.h>
#include <xcb/randr.h>
#include <xcb/xcbext.h>

#include <cstddef>
#include <stdexcept>

namespace TestSupport {

using namespace Platform::X11;

namespace {

xcb_randr_output_t firstOutput(const Connection& connection)
{
    const auto cookie = xcb_randr_get_screen_resources_current(connection, connection.root());
    const auto resources = adopt(xcb_randr_get_screen_resources_current_reply(connection, cookie, nullptr));
    if (!resources || resources->num_outputs == 0)
        throw std::runtime_error("the X server has no output");
    return *xcb_randr_get_screen_resources_current_outputs(resources.get());
}

std::uint32_t millimetres(int pixels) { return static_cast<std::uint32_t>(pixels * 254 / 960); }  // 96 dots per inch

void throwOnError(const Connection& connection, xcb_void_cookie_t cookie)
{
    if (adopt(xcb_request_check(connection, cookie)))
        throw std::runtime_error("the X server refuses the monitor");
}

struct SetMonitorRequest {
    xcb_randr_set_monitor_request_t head;
    xcb_randr_monitor_info_t info;
    xcb_randr_output_t output;
};
static_assert(sizeof(SetMonitorRequest) == 8 + 24 + 4);

// libxcb 1.15's own function for this request hands over memory that it never filled in.
xcb_void_cookie_t send(const Connection& connection, SetMonitorRequest& monitor)
{
    xcb_protocol_request_t request{.count = 1, .ext = &xcb_randr_id, .opcode = XCB_RANDR_SET_MONITOR, .isvoid = 1};
    const std::size_t length = monitor.info.nOutput == 0 ? offsetof(SetMonitorRequest, output) : sizeof monitor;
    iovec parts[3]{{}, {}, {&monitor, length}};  // the library wants two spare ones before the request's own
    return {xcb_send_request(connection, XCB_REQUEST_CHECKED, parts + 2, &request)};
}

}  // namespace

void setMonitor(Connection& connection, const std::string& name, const DeviceRect& frame, bool isPrimary)
{
    SetMonitorRequest monitor{};
    monitor.head.window = connection.root();
    monitor.info.name = connection.atom(name);
    monitor.info.primary = isPrimary ? 1 : 0;
    monitor.info.nOutput = isPrimary ? 1 : 0;
    monitor.info.x = static_cast<std::int16_t>(frame.x);
    monitor.info.y = static_cast<std::int16_t>(frame.y);
    monitor.info.width = static_cast<std::uint16_t>(frame.width);
    monitor.info.height = static_cast<std::uint16_t>(frame.height);
    monitor.info.width_in_millimeters = millimetres(frame.width);
    monitor.info.height_in_millimeters = millimetres(frame.height);
    monitor.output = isPrimary ? firstOutput(connection) : xcb_randr_output_t{XCB_NONE};
    // The server refuses a name that is taken.
    adopt(xcb_request_check(connection, xcb_randr_delete_monitor_checked(connection, connection.root(), monitor.info.name)));
    throwOnError(connection, send(connection, monitor));
}

void removeMonitor(Connection& connection, const std::string& name)
{
    throwOnError(connection, xcb_randr_delete_monitor_checked(connection, connection.root(), connection.atom(name)));
}

}  // namespace TestSupport

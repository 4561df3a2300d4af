#include "X11/Capture/ServerResources.h"

#include <sys/uio.h>
#include <xcb/xcbext.h>

#include <stdexcept>

namespace CaptureTests {
namespace {

using namespace Platform::X11;

// The protocol of X-Resource 1.0; its own client library is not worth a dependency.
xcb_extension_t resourceExtension = {"X-Resource", 0};
constexpr std::uint8_t queryClientResources = 2;

struct Request {
    std::uint8_t majorOpcode;
    std::uint8_t minorOpcode;
    std::uint16_t length;
    std::uint32_t client;
};

struct ReplyHead {
    std::uint8_t responseType;
    std::uint8_t unused;
    std::uint16_t sequence;
    std::uint32_t length;
    std::uint32_t kindCount;
    std::uint32_t alsoUnused[5];
};

struct Kind {
    xcb_atom_t name;
    std::uint32_t count;
};

Reply<void> ask(Connection& client)
{
    Request request{};
    request.client = xcb_get_setup(client)->resource_id_base;
    const xcb_protocol_request_t protocol{.count = 1, .ext = &resourceExtension, .opcode = queryClientResources, .isvoid = 0};
    iovec parts[3]{{}, {}, {&request, sizeof request}};  // the library wants two spare ones before the request's own
    const auto sequence = xcb_send_request(client, XCB_REQUEST_CHECKED, parts + 2, &protocol);
    return Reply<void>(xcb_wait_for_reply(client, sequence, nullptr));
}

std::string nameOf(Connection& client, xcb_atom_t atom)
{
    const auto reply = adopt(xcb_get_atom_name_reply(client, xcb_get_atom_name(client, atom), nullptr));
    if (!reply)
        return {};
    return {xcb_get_atom_name_name(reply.get()), static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

}  // namespace

ServerResources serverResources(Connection& client)
{
    const auto reply = client.has(resourceExtension) ? ask(client) : nullptr;
    if (!reply)
        throw std::runtime_error("the X server does not tell what it holds");
    const auto* head = static_cast<const ReplyHead*>(reply.get());
    const auto* kinds = reinterpret_cast<const Kind*>(head + 1);
    ServerResources resources;
    for (std::uint32_t i = 0; i < head->kindCount; ++i)
        resources[nameOf(client, kinds[i].name)] = kinds[i].count;
    return resources;
}

}  // namespace CaptureTests

#include "Strip.h"

#include <sys/ipc.h>
#include <sys/shm.h>

#include <stdexcept>

namespace Benchmarks {
namespace {

// As the pixels of opaque windows beneath are, with or without a fourth byte of meaning.
void invert(std::span<std::uint32_t> pixels)
{
    constexpr std::uint32_t opaque = 0xff000000;
    for (auto& pixel : pixels)
        pixel = ~pixel | opaque;
}

}  // namespace

Strip::Strip(Platform::X11::Connection& connection, Place place, Extent extent)
    : m_connection(connection), m_extent(extent), m_format(makeFormat()), m_window(connection.newId()), m_graphics(connection.newId()),
      m_segment(connection.newId())
{
    createWindow(place);
    markForCompositors();
    const std::uint32_t noExposures = 0;
    xcb_create_gc(connection, m_graphics, m_window, XCB_GC_GRAPHICS_EXPOSURES, &noExposures);
    shareMemory();
    xcb_map_window(connection, m_window);
}

// Some compositors give windows of the screen's own depth a shadow; without a compositor
// windows of another depth stay black.
Strip::Format Strip::makeFormat()
{
    const auto& screen = m_connection.screen();
    if (!m_connection.hasCompositor())
        return {screen.root_depth, screen.root_visual, screen.default_colormap};
    const auto visual = m_connection.argbVisual();
    const auto colormap = m_connection.newId();
    xcb_create_colormap(m_connection, XCB_COLORMAP_ALLOC_NONE, colormap, screen.root, visual);
    return {32, visual, colormap};
}

void Strip::createWindow(Place place)
{
    // In the order of the mask's bits.
    const std::uint32_t values[] = {XCB_BACK_PIXMAP_NONE, 0, 1, m_format.colormap};
    xcb_create_window(m_connection, m_format.depth, m_window, m_connection.root(), place.x, place.y, m_extent.width, m_extent.height, 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, m_format.visual, XCB_CW_BACK_PIXMAP | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP,
        values);
}

// So that a compositor neither shades nor fades the line.
void Strip::markForCompositors()
{
    const auto set = [this](const char* name, xcb_atom_t type, std::uint32_t value) {
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, m_connection.atom(name), type, 32, 1, &value);
    };
    set("_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, m_connection.atom("_NET_WM_WINDOW_TYPE_NOTIFICATION"));
    set("_NET_WM_WINDOW_OPACITY", XCB_ATOM_CARDINAL, 0xffffffff);
    set("_COMPTON_SHADOW", XCB_ATOM_CARDINAL, 0);
}

void Strip::shareMemory()
{
    const auto count = std::size_t{m_extent.width} * m_extent.height;
    const int identifier = shmget(IPC_PRIVATE, count * sizeof(std::uint32_t), IPC_CREAT | 0600);
    void* memory = identifier >= 0 ? shmat(identifier, nullptr, 0) : nullptr;
    if (memory == nullptr || reinterpret_cast<std::intptr_t>(memory) == -1)
        throw std::runtime_error("no shared memory");
    m_pixels = {static_cast<std::uint32_t*>(memory), count};
    const auto cookie = xcb_shm_attach_checked(m_connection, m_segment, static_cast<std::uint32_t>(identifier), 0);
    const auto refusal = Platform::X11::adopt(xcb_request_check(m_connection, cookie));
    shmctl(identifier, IPC_RMID, nullptr);
    if (refusal)
        throw std::runtime_error("the X server takes no shared memory");
}

void Strip::request(Place place)
{
    m_request = xcb_shm_get_image(
        m_connection, m_connection.root(), place.x, place.y, m_extent.width, m_extent.height, ~0U, XCB_IMAGE_FORMAT_Z_PIXMAP, m_segment, 0);
}

bool Strip::receive()
{
    const auto reply = Platform::X11::adopt(xcb_shm_get_image_reply(m_connection, m_request, nullptr));
    if (reply)
        invert(m_pixels);
    return reply != nullptr;
}

void Strip::moveTo(Place place)
{
    const std::uint32_t values[] = {static_cast<std::uint32_t>(place.x), static_cast<std::uint32_t>(place.y)};
    xcb_configure_window(m_connection, m_window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, values);
}

// The server reads the memory before it answers the next request for pixels.
void Strip::put()
{
    xcb_shm_put_image(m_connection, m_window, m_graphics, m_extent.width, m_extent.height, 0, 0, m_extent.width, m_extent.height, 0, 0,
        m_format.depth, XCB_IMAGE_FORMAT_Z_PIXMAP, 0, m_segment, 0);
}

}  // namespace Benchmarks

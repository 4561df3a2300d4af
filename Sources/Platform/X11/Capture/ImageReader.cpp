#include "Platform/X11/Capture/ImageReader.h"

#include <sys/ipc.h>
#include <sys/shm.h>

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <cstring>

namespace Platform::X11 {
namespace {

std::size_t sizeOf(const DeviceRect& area) { return static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height); }

}  // namespace

ImageReader::ImageReader(CaptureServer& server)
    : m_server(server), m_graphics(server.connection().newScreenGraphics()), m_sharedCanvases(server), m_serverCanvases(server),
      m_usesSharedMemory(server.hasSharedMemory())
{
}

ImageReader::~ImageReader() { xcb_free_gc(m_server.connection(), m_graphics); }

void ImageReader::begin(std::size_t pixels)
{
    m_sharesCanvases = m_sharedCanvases.begin(pixels);
    m_serverCanvases.begin();
    m_pictures.clear();
    m_requests.clear();
    m_size = 0;
}

std::size_t ImageReader::add(xcb_drawable_t drawable, const DeviceRect& area)
{
    if (!m_sharesCanvases) {
        const auto number = addPicture(area);
        addPart(drawable, area, 0);
        return number;
    }
    std::size_t number = 0;
    const auto& canvas = addCanvas(area, number);
    const auto place = toWire(area);
    xcb_copy_area(m_server.connection(), drawable, canvas.pixmap, m_graphics, place.x, place.y, 0, 0, place.width, place.height);
    return number;
}

Canvas& ImageReader::addCanvas(const DeviceRect& size, std::size_t& number)
{
    if (m_sharesCanvases) {
        auto& canvas = m_sharedCanvases.add(size);
        number = m_pictures.size();
        m_pictures.push_back({0, sizeOf(size), m_sharedCanvases.pixels().data()});
        return canvas;
    }
    auto& canvas = m_serverCanvases.add(size);
    number = addPicture(size);
    addPart(canvas.pixmap, {0, 0, size.width, size.height}, 0);
    return canvas;
}

std::size_t ImageReader::addPicture(const DeviceRect& size)
{
    assert(!m_sharesCanvases);
    m_pictures.push_back({m_size, sizeOf(size), nullptr});
    m_size += sizeOf(size);
    return m_pictures.size() - 1;
}

void ImageReader::addPart(xcb_drawable_t drawable, const DeviceRect& area, std::size_t offset)
{
    m_requests.push_back({drawable, area, m_pictures.back().offset + offset, 0});
}

std::span<const std::uint32_t> ImageReader::pixels(std::size_t number) const
{
    const auto& picture = m_pictures[number];
    if (picture.onCanvas != nullptr)
        return {picture.onCanvas, picture.size};
    const auto* all = m_usesSharedMemory ? m_shared->pixels().data() : m_copied.data();
    return {all + picture.offset, picture.size};
}

bool ImageReader::read()
{
    if (m_pictures.empty())
        return true;
    if (m_sharesCanvases) {
        m_server.connection().waitForServer();
        m_server.countRoundTrip();
        return true;
    }
    if (m_usesSharedMemory)
        reserve(m_size);
    const bool isRead = m_usesSharedMemory ? readShared() : readCopied();
    m_server.countRoundTrip();
    return isRead;
}

void ImageReader::reserve(std::size_t pixels)
{
    if (m_shared && pixels <= m_shared->pixels().size())
        return;
    m_shared.reset();
    m_shared = SharedMemory::make(m_server.connection(), pixels);
    m_server.countRoundTrip();
    m_usesSharedMemory = m_shared != nullptr;
}

bool ImageReader::readShared()
{
    auto& c = m_server.connection();
    for (auto& request : m_requests) {
        const auto area = toWire(request.area);
        const auto offset = static_cast<std::uint32_t>(request.offset * sizeof(std::uint32_t));
        request.sequence = xcb_shm_get_image(
            c, request.drawable, area.x, area.y, area.width, area.height, ~0U, XCB_IMAGE_FORMAT_Z_PIXMAP, m_shared->segment(), offset)
                               .sequence;
    }
    bool isRead = true;
    for (const auto& request : m_requests)
        isRead = adopt(xcb_shm_get_image_reply(c, {request.sequence}, nullptr)) != nullptr && isRead;
    return isRead;
}

bool ImageReader::readCopied()
{
    auto& c = m_server.connection();
    m_copied.resize(m_size);
    for (auto& request : m_requests) {
        const auto area = toWire(request.area);
        request.sequence = xcb_get_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, request.drawable, area.x, area.y, area.width, area.height, ~0U).sequence;
    }
    bool isRead = true;
    for (const auto& request : m_requests) {
        const auto image = adopt(xcb_get_image_reply(c, {request.sequence}, nullptr));
        const auto bytes = sizeOf(request.area) * sizeof(std::uint32_t);
        isRead = isRead && image != nullptr && static_cast<std::size_t>(xcb_get_image_data_length(image.get())) >= bytes;
        if (isRead)
            std::memcpy(m_copied.data() + request.offset, xcb_get_image_data(image.get()), bytes);
    }
    return isRead;
}

}  // namespace Platform::X11

#include "Platform/X11/Capture/ImageReader.h"

#include <sys/ipc.h>
#include <sys/shm.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace Platform::X11 {

std::size_t ImageReader::add(xcb_drawable_t drawable, const DeviceRect& area)
{
    m_requests.push_back({drawable, area, 0, 0});
    return m_requests.size() - 1;
}

std::span<const std::uint32_t> ImageReader::pixels(std::size_t number) const
{
    const auto& request = m_requests[number];
    const auto* all = m_usesSharedMemory ? m_shared : m_copied.data();
    return {all + request.offset, request.size()};
}

bool ImageReader::read()
{
    m_size = 0;
    for (auto& request : m_requests) {
        request.offset = m_size;
        m_size += request.size();
    }
    if (m_requests.empty())
        return true;
    if (m_usesSharedMemory)
        reserve(m_size);
    const bool isRead = m_usesSharedMemory ? readShared() : readCopied();
    m_server.countRoundTrip();
    return isRead;
}

void ImageReader::reserve(std::size_t pixels)
{
    if (pixels <= m_capacity)
        return;
    release();
    constexpr std::size_t page = 4096;
    attach((pixels * sizeof(std::uint32_t) + page - 1) / page * page);
}

// A server that cannot see our memory (another machine, another container) says so.
void ImageReader::attach(std::size_t bytes)
{
    m_usesSharedMemory = false;
    const int id = shmget(IPC_PRIVATE, bytes, IPC_CREAT | 0600);
    if (id < 0)
        return;
    void* memory = shmat(id, nullptr, 0);
    if (reinterpret_cast<std::intptr_t>(memory) != -1) {
        auto& c = m_server.connection();
        m_segment = c.newId();
        const auto error = adopt(xcb_request_check(c, xcb_shm_attach_checked(c, m_segment, static_cast<std::uint32_t>(id), 0)));
        m_server.countRoundTrip();
        m_usesSharedMemory = !error && !c.isBroken();
        if (m_usesSharedMemory) {
            m_shared = static_cast<std::uint32_t*>(memory);
            m_capacity = bytes / sizeof(std::uint32_t);
        } else {
            shmdt(memory);
        }
    }
    // It lives on until both sides have detached, also when this process dies.
    shmctl(id, IPC_RMID, nullptr);
}

void ImageReader::release()
{
    if (m_shared == nullptr)
        return;
    xcb_shm_detach(m_server.connection(), m_segment);
    shmdt(m_shared);
    m_shared = nullptr;
    m_capacity = 0;
}

bool ImageReader::readShared()
{
    auto& c = m_server.connection();
    for (auto& request : m_requests) {
        const auto area = toWire(request.area);
        const auto offset = static_cast<std::uint32_t>(request.offset * sizeof(std::uint32_t));
        request.sequence =
            xcb_shm_get_image(c, request.drawable, area.x, area.y, area.width, area.height, ~0U, XCB_IMAGE_FORMAT_Z_PIXMAP, m_segment, offset)
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
        const auto bytes = request.size() * sizeof(std::uint32_t);
        isRead = isRead && image != nullptr && static_cast<std::size_t>(xcb_get_image_data_length(image.get())) >= bytes;
        if (isRead)
            std::memcpy(m_copied.data() + request.offset, xcb_get_image_data(image.get()), bytes);
    }
    return isRead;
}

}  // namespace Platform::X11

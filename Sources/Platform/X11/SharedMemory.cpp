#include "Platform/X11/SharedMemory.h"

#include <sys/ipc.h>
#include <sys/shm.h>

namespace Platform::X11 {
namespace {

std::uint32_t* attachHere(int identifier)
{
    void* memory = shmat(identifier, nullptr, 0);
    return reinterpret_cast<std::intptr_t>(memory) != -1 ? static_cast<std::uint32_t*>(memory) : nullptr;
}

// A server that cannot see our memory says so.
bool attachThere(Connection& connection, xcb_shm_seg_t segment, int identifier)
{
    const auto request = xcb_shm_attach_checked(connection, segment, static_cast<std::uint32_t>(identifier), 0);
    return !adopt(xcb_request_check(connection, request)) && !connection.isBroken();
}

}  // namespace

std::unique_ptr<SharedMemory> SharedMemory::make(Connection& connection, std::size_t pixels)
{
    constexpr std::size_t page = 4096;
    const auto bytes = (pixels * sizeof(std::uint32_t) + page - 1) / page * page;
    if (!connection.has(xcb_shm_id))
        return nullptr;
    const int identifier = shmget(IPC_PRIVATE, bytes, IPC_CREAT | 0600);
    if (identifier < 0)
        return nullptr;
    std::unique_ptr<SharedMemory> shared;
    if (auto* memory = attachHere(identifier)) {
        const auto segment = connection.newId();
        if (attachThere(connection, segment, identifier))
            shared.reset(new SharedMemory(connection, segment, {memory, bytes / sizeof *memory}));
        else
            shmdt(memory);
    }
    // It lives on until both sides have detached, also when this process dies.
    shmctl(identifier, IPC_RMID, nullptr);
    return shared;
}

SharedMemory::SharedMemory(Connection& connection, xcb_shm_seg_t segment, std::span<std::uint32_t> pixels)
    : m_connection(connection), m_segment(segment), m_pixels(pixels)
{
}

SharedMemory::~SharedMemory()
{
    xcb_shm_detach(m_connection, m_segment);
    shmdt(m_pixels.data());
}

}  // namespace Platform::X11

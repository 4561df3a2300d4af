#include "Lines.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace Benchmarks {
namespace {

using Platform::X11::Connection;
using Platform::X11::DevicePoint;
using Platform::X11::DeviceRect;

constexpr std::uint32_t colourMask = 0x00ffffff;
constexpr int pieceLength = 64;
constexpr int distanceFromCrossing = 100;

// Where the piece begins on a side of that length: behind the crossing, where there is room.
int pieceStart(int crossing, int side)
{
    const int behind = crossing + distanceFromCrossing;
    return behind + pieceLength <= side ? behind : crossing - distanceFromCrossing - pieceLength;
}

DeviceRect rowPiece(DevicePoint crossing, int screenWidth) { return {pieceStart(crossing.x, screenWidth), crossing.y, pieceLength, 1}; }

DeviceRect columnPiece(DevicePoint crossing, int screenHeight) { return {crossing.x, pieceStart(crossing.y, screenHeight), 1, pieceLength}; }

xcb_get_image_cookie_t request(const Connection& connection, const DeviceRect& rect)
{
    return xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, connection.root(), static_cast<std::int16_t>(rect.x),
        static_cast<std::int16_t>(rect.y), static_cast<std::uint16_t>(rect.width), static_cast<std::uint16_t>(rect.height), ~0U);
}

std::vector<std::uint32_t> receive(const Connection& connection, xcb_get_image_cookie_t cookie)
{
    const auto reply = Platform::X11::adopt(xcb_get_image_reply(connection, cookie, nullptr));
    std::vector<std::uint32_t> pixels(pieceLength);
    const auto size = pixels.size() * sizeof(std::uint32_t);
    if (!reply || static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) != size)
        throw std::runtime_error("cannot read the screen");
    std::memcpy(pixels.data(), xcb_get_image_data(reply.get()), size);
    for (auto& pixel : pixels)
        pixel &= colourMask;
    return pixels;
}

}  // namespace

LineReader::LineReader(const std::string& displayName) : m_connection(Connection::open(displayName))
{
    if (!m_connection)
        throw std::runtime_error("no X server at " + displayName);
}

LinePieces LineReader::read(DevicePoint crossing) const
{
    const auto row = request(*m_connection, rowPiece(crossing, screenWidth()));
    const auto column = request(*m_connection, columnPiece(crossing, screenHeight()));
    auto rowPixels = receive(*m_connection, row);
    return {std::move(rowPixels), receive(*m_connection, column)};
}

DevicePoint LineReader::pointer() const
{
    const auto reply = Platform::X11::adopt(xcb_query_pointer_reply(*m_connection, xcb_query_pointer(*m_connection, m_connection->root()), nullptr));
    if (!reply)
        throw std::runtime_error("the X server is gone");
    return {reply->root_x, reply->root_y};
}

LinePieces readMonitor(const TestSupport::FrameBuffer& monitor, DevicePoint crossing, int screenWidth, int screenHeight)
{
    const auto read = [&monitor](const DeviceRect& piece) {
        const auto image = monitor.read(piece);
        std::vector<std::uint32_t> pixels(image.pixels().begin(), image.pixels().end());
        for (auto& pixel : pixels)
            pixel &= colourMask;
        return pixels;
    };
    return {read(rowPiece(crossing, screenWidth)), read(columnPiece(crossing, screenHeight))};
}

bool areInverse(const std::vector<std::uint32_t>& one, const std::vector<std::uint32_t>& other)
{
    return std::equal(one.begin(), one.end(), other.begin(), [](std::uint32_t a, std::uint32_t b) { return (a ^ b) == colourMask; });
}

bool areInverse(const LinePieces& one, const LinePieces& other) { return areInverse(one[0], other[0]) && areInverse(one[1], other[1]); }

}  // namespace Benchmarks

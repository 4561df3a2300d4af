#include "Support/Desktop/FrameBuffer.h"

#include <array>
#include <bit>
#include <cstdint>
#include <fstream>
#include <stdexcept>

namespace TestSupport {
namespace {

// The head of an XWD file, version 7: 25 big-endian words, of which these say where the
// pixels are.
enum HeaderWord : std::size_t { headerSize, pixmapWidth = 4, pixmapHeight = 5, bitsPerPixel = 11, colourCount = 19, headerWords = 25 };
constexpr std::uint32_t bytesPerColour = 12;

std::uint32_t fromBigEndian(std::uint32_t value) { return std::endian::native == std::endian::little ? __builtin_bswap32(value) : value; }

}  // namespace

Platform::Image FrameBuffer::read() const
{
    std::ifstream file(m_folder.path() / "Xvfb_screen0", std::ios::binary);
    std::array<std::uint32_t, headerWords> header{};
    file.read(reinterpret_cast<char*>(header.data()), sizeof header);
    if (!file || fromBigEndian(header[bitsPerPixel]) != 32)
        throw std::runtime_error("no frame buffer of 32 bits a pixel in " + m_folder.path().string());
    Platform::Image image(static_cast<int>(fromBigEndian(header[pixmapWidth])), static_cast<int>(fromBigEndian(header[pixmapHeight])));
    file.seekg(fromBigEndian(header[headerSize]) + fromBigEndian(header[colourCount]) * bytesPerColour);
    file.read(reinterpret_cast<char*>(image.pixels().data()), static_cast<std::streamsize>(image.pixels().size_bytes()));
    if (!file)
        throw std::runtime_error("the frame buffer is too short");
    for (auto& pixel : image.pixels())
        pixel |= 0xff000000;
    return image;
}

}  // namespace TestSupport

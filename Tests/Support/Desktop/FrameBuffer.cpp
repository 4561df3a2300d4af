#include "Support/Desktop/FrameBuffer.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <system_error>

namespace TestSupport {
namespace {

using Platform::X11::DeviceRect;

// The head of an XWD file, version 7: 25 big-endian words, of which these say where the
// pixels are.
enum HeaderWord : std::size_t { headerSize, pixmapWidth = 4, pixmapHeight = 5, bitsPerPixel = 11, colourCount = 19, headerWords = 25 };
constexpr std::size_t wordsPerColour = 3;

std::uint32_t fromBigEndian(std::uint32_t value) { return std::endian::native == std::endian::little ? __builtin_bswap32(value) : value; }

// The server's own memory.
class MappedFile {
public:
    explicit MappedFile(const std::filesystem::path& path) : m_file(open(path.c_str(), O_RDONLY | O_CLOEXEC))
    {
        struct stat status { };
        if (m_file >= 0 && fstat(m_file, &status) == 0)
            m_size = static_cast<std::size_t>(status.st_size);
        if (m_size > 0)
            m_memory = mmap(nullptr, m_size, PROT_READ, MAP_SHARED, m_file, 0);
    }
    ~MappedFile()
    {
        if (m_memory != MAP_FAILED)
            munmap(m_memory, m_size);
        if (m_file >= 0)
            close(m_file);
    }
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    // Empty where there is none.
    std::span<const std::uint32_t> words() const
    {
        return m_memory == MAP_FAILED ? std::span<const std::uint32_t>() : std::span(static_cast<const std::uint32_t*>(m_memory), m_size / 4);
    }

private:
    const int m_file;
    std::size_t m_size = 0;
    void* m_memory = MAP_FAILED;
};

class Screen {
public:
    explicit Screen(const std::filesystem::path& folder) : m_file(folder / "Xvfb_screen0"), m_words(m_file.words())
    {
        if (m_words.size() < headerWords || word(bitsPerPixel) != 32 || m_words.size() < placeOf(0, area().height))
            throw std::runtime_error("no frame buffer of 32 bits a pixel in " + folder.string());
    }

    DeviceRect area() const { return {0, 0, static_cast<int>(word(pixmapWidth)), static_cast<int>(word(pixmapHeight))}; }

    Platform::Image read(const DeviceRect& part) const
    {
        Platform::Image image(part.width, part.height);
        auto to = image.pixels().begin();
        for (int y = part.y; y < part.bottom(); ++y, to += part.width)
            std::copy_n(m_words.begin() + static_cast<std::ptrdiff_t>(placeOf(part.x, y)), part.width, to);
        for (auto& pixel : image.pixels())
            pixel |= 0xff000000;
        return image;
    }

private:
    std::uint32_t word(HeaderWord index) const { return fromBigEndian(m_words[index]); }

    std::size_t placeOf(int x, int y) const
    {
        const auto first = word(headerSize) / 4 + word(colourCount) * wordsPerColour;
        return first + static_cast<std::size_t>(y) * word(pixmapWidth) + static_cast<std::size_t>(x);
    }

    const MappedFile m_file;
    const std::span<const std::uint32_t> m_words;
};

}  // namespace

// In memory where files can be: else the kernel would write the screen to a disk all the time.
std::filesystem::path FrameBuffer::parentFolder()
{
    constexpr std::uintmax_t enough = 256U << 20;  // a screen of 8K takes half of it
    const std::filesystem::path memory = "/dev/shm";
    std::error_code error;
    const bool hasRoom = access(memory.c_str(), W_OK) == 0 && std::filesystem::space(memory, error).available >= enough && !error;
    return hasRoom ? memory : std::filesystem::temp_directory_path();
}

Platform::Image FrameBuffer::read() const
{
    const Screen screen(m_folder.path());
    return screen.read(screen.area());
}

Platform::Image FrameBuffer::read(const DeviceRect& part) const
{
    const Screen screen(m_folder.path());
    return screen.read(intersection(part, screen.area()));
}

}  // namespace TestSupport

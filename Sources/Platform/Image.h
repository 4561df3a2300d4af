// A picture in memory: rows of 32-bit pixels from top to bottom, no padding, each
// pixel 0xAARRGGBB in native byte order with colours multiplied by alpha. Resizing
// keeps the memory it has, so a buffer that is used again does not allocate.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Platform {

class Image {
public:
    Image() = default;
    Image(int width, int height) { resize(width, height); }

    // Contents are unspecified afterwards. Neither side may be negative.
    void resize(int width, int height)
    {
        m_width = width;
        m_height = height;
        m_pixels.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    }

    int width() const { return m_width; }
    int height() const { return m_height; }
    bool isEmpty() const { return m_pixels.empty(); }

    std::span<std::uint32_t> pixels() { return m_pixels; }
    std::span<const std::uint32_t> pixels() const { return m_pixels; }
    std::uint32_t pixel(int x, int y) const
    {
        return m_pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x)];
    }

    friend bool operator==(const Image&, const Image&) = default;

private:
    int m_width = 0;
    int m_height = 0;
    std::vector<std::uint32_t> m_pixels;
};

}  // namespace Platform

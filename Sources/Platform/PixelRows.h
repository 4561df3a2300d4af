// A picture that is read row by row where it lies, which spares a copy of all of it.
// Pixels are those of an Image.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "Platform/Image.h"

namespace Platform {

class PixelRows {
public:
    virtual ~PixelRows() = default;

    virtual int width() const = 0;
    virtual int height() const = 0;

    // Row `y` from the top: where it lies, else in `scratch`, which has room for a row.
    virtual std::span<const std::uint32_t> row(int y, std::span<std::uint32_t> scratch) const = 0;
};

// Those of an image, which must outlive this.
class ImageRows final : public PixelRows {
public:
    ImageRows() = default;
    explicit ImageRows(const Image& image) : m_image(&image) { }

    int width() const override { return m_image != nullptr ? m_image->width() : 0; }
    int height() const override { return m_image != nullptr ? m_image->height() : 0; }
    std::span<const std::uint32_t> row(int y, std::span<std::uint32_t>) const override
    {
        const auto width = static_cast<std::size_t>(m_image->width());
        return m_image->pixels().subspan(static_cast<std::size_t>(y) * width, width);
    }

private:
    const Image* m_image = nullptr;
};

}  // namespace Platform

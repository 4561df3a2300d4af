// A picture that is read row by row, as an image.
#pragma once

#include <algorithm>
#include <vector>

#include "Platform/PixelRows.h"

namespace TestSupport {

inline Platform::Image imageOf(const Platform::PixelRows& rows)
{
    Platform::Image image(rows.width(), rows.height());
    std::vector<std::uint32_t> scratch(static_cast<std::size_t>(rows.width()));
    auto to = image.pixels().begin();
    for (int y = 0; y < rows.height(); ++y) {
        const auto row = rows.row(y, scratch);
        to = std::copy(row.begin(), row.end(), to);
    }
    return image;
}

}  // namespace TestSupport

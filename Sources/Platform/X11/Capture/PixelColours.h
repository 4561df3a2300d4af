// The colour of a pixel whose highest byte says nothing: 0xXXRRGGBB to 0x00RRGGBB.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

namespace Platform::X11 {

constexpr std::uint32_t colourOf(std::uint32_t pixel) { return pixel & 0xffffff; }

constexpr std::uint32_t opaqueOf(std::uint32_t pixel) { return pixel | 0xff000000; }

// `to` has room for as many.
inline void takeColours(std::span<const std::uint32_t> from, std::uint32_t* to) { std::transform(from.begin(), from.end(), to, colourOf); }

}  // namespace Platform::X11

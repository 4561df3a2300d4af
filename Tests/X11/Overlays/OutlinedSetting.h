// An overlay that is one thing with an outline of its own, a disc above a bar, on a ground of
// one colour.
#pragma once

#include <algorithm>
#include <cmath>

#include "Support/Desktop/Wallpaper.h"
#include "X11/Overlays/OverlaysSetting.h"

namespace OverlayTests {

inline constexpr int side = 120;
inline constexpr int footer = 28;
inline constexpr std::uint32_t core = 0xffff0000;
inline constexpr std::uint32_t rim = 0x73000000;
inline constexpr std::uint32_t fringe = 0x10000000;
inline constexpr std::uint32_t tinted = 0x80800000;

// A disc with a half-transparent rim and a faint fringe, and below it a bar of half-transparent red.
inline Image disc(std::uint32_t inside = core)
{
    Image image(side, side + footer);
    auto pixel = image.pixels().begin();
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < side; ++x) {
            const double distance = std::hypot(x + 0.5 - side / 2.0, y + 0.5 - side / 2.0);
            const bool isBar = y >= side + 4 && y < side + 24 && x >= 20 && x < 100;
            *pixel++ = distance < 57 ? inside : distance < 58 ? rim : distance < 59 ? fringe : isBar ? tinted : 0U;
        }
    }
    return image;
}

inline std::uint32_t blended(std::uint32_t over, std::uint32_t beneath)
{
    const std::uint32_t rest = 255 - (over >> 24);
    std::uint32_t pixel = 0xff000000;
    for (const unsigned shift : {0U, 8U, 16U})
        pixel |= std::min(255U, ((over >> shift) & 0xff) + (((beneath >> shift) & 0xff) * rest + 127) / 255) << shift;
    return pixel;
}

// Compositors round each in their own way.
inline bool isNear(std::uint32_t a, std::uint32_t b)
{
    for (const unsigned shift : {0U, 8U, 16U}) {
        if (std::abs(static_cast<int>((a >> shift) & 0xff) - static_cast<int>((b >> shift) & 0xff)) > 1)
            return false;
    }
    return true;
}

inline Image plain(int width, int height, std::uint32_t colour)
{
    Image image(width, height);
    std::fill(image.pixels().begin(), image.pixels().end(), colour);
    return image;
}

// Draws an image, of which that is the alpha's number.
class ImageSource final : public PixelSource {
public:
    ImageSource(const Image& image, std::uint64_t alphaNumber) : m_image(image), m_alphaNumber(alphaNumber) { }

    int width() const override { return m_image.width(); }
    int height() const override { return m_image.height(); }
    void draw(std::span<std::uint32_t> pixels) override
    {
        ASSERT_EQ(pixels.size(), m_image.pixels().size());
        std::copy(m_image.pixels().begin(), m_image.pixels().end(), pixels.begin());
    }
    std::uint64_t alphaNumber() const override { return m_alphaNumber; }

private:
    const Image& m_image;
    const std::uint64_t m_alphaNumber;
};

class OutlinedSetting : public OverlaysSetting {
protected:
    using OverlaysSetting::OverlaysSetting;

    static constexpr std::uint32_t ground = 0xff4060a0;

    std::unique_ptr<OverlayWindow> makeDisc(int left, int top)
    {
        auto overlay = overlays->makeOverlayWindow({.frame = frameAt(left, top), .hasShadow = true}, delegate);
        overlay->makeKeyAndOrderFront();
        present(*overlay, picture, discAlpha);
        return overlay;
    }

    // Of a frame whose top-left corner is that device pixel.
    static Rect frameAt(int left, int top) { return {double(left), 600.0 - top - side - footer, side, side + footer}; }

    static constexpr std::uint64_t discAlpha = 1;

    static void present(OverlayWindow& overlay, const Image& image)
    {
        const Picture shown{.rectangle = {0, 0, side, side + footer}, .image = &image};
        overlay.present({&shown, 1});
    }
    static void present(OverlayWindow& overlay, const Image& image, std::uint64_t alphaNumber)
    {
        ImageSource source(image, alphaNumber);
        const Picture shown{.rectangle = {0, 0, side, side + footer}, .source = &source};
        overlay.present({&shown, 1});
    }

    void moveTo(OverlayWindow& overlay, int left, int top)
    {
        overlay.setFrame(frameAt(left, top));
        present(overlay, picture, discAlpha);
    }

    // How many pixels are not what they must be with the disc at that corner, each of which
    // is `expected` of the picture's pixel and the ground.
    template <typename Expected> int wrongPixels(int left, int top, Expected&& expected)
    {
        const auto shown = screenshot();
        int wrong = 0;
        for (int y = 0; y < shown.height(); ++y) {
            for (int x = 0; x < shown.width(); ++x) {
                const bool isInside = x >= left && y >= top && x < left + side && y < top + side + footer;
                const auto own = isInside ? picture.pixel(x - left, y - top) : 0;
                wrong += isNear(shown.pixel(x, y), expected(own)) ? 0 : 1;
            }
        }
        return wrong;
    }
    int wrongPixelsBlended(int left, int top)
    {
        return wrongPixels(left, top, [](std::uint32_t own) { return blended(own, ground); });
    }
    int wrongPixelsHard(int left, int top)
    {
        return wrongPixels(left, top, [](std::uint32_t own) { return own == core || own == tinted ? 0xffff0000 : own == rim ? 0xff000000 : ground; });
    }

    xcb_window_t pictureWindow() const
    {
        std::vector<OverlayEntry> entries;
        stack.copyTo(entries);
        return entries.back().pictures.at(0).window;
    }

    const Image picture = disc();
    TestSupport::Wallpaper wallpaper{desktop.displayName(), plain(800, 600, ground)};
};

}  // namespace OverlayTests

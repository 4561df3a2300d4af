// One override-redirect window that shows one picture of an overlay.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "Platform/OverlayWindow.h"
#include "Platform/X11/Connection.h"
#include "Platform/X11/MonitorLayout.h"
#include "Platform/X11/Overlays/PictureBuffer.h"
#include "Platform/X11/Overlays/PictureOutline.h"

namespace Platform::X11 {

// What all windows of one overlay share. Under a compositor windows are ARGB with alpha
// 255 (some compositors give those of depth 24 a shadow); without one such windows
// would be black, so they have the root's own visual.
struct PictureFormat {
    bool isBlended = false;
    std::uint8_t depth = 24;
    xcb_visualid_t visual = 0;
    xcb_colormap_t colormap = XCB_COLORMAP_NONE;
    // A thing with an outline of its own, which takes the clicks inside it and lets those
    // outside through: under a compositor the pixels' alpha draws the outline and the
    // shadow follows it, without one the window has that shape and is opaque.
    bool isOutlined = false;
};

inline bool isColour(const Picture& picture) { return picture.source == nullptr && (picture.image == nullptr || picture.image->isEmpty()); }

class PictureWindow {
public:
    PictureWindow(Connection&, const PictureFormat&);
    ~PictureWindow();
    PictureWindow(const PictureWindow&) = delete;
    PictureWindow& operator=(const PictureWindow&) = delete;

    xcb_window_t id() const { return m_window; }
    // Empty while there is nothing to show.
    const DeviceRect& frame() const { return m_frame; }

    // Takes over what show() will show: of the picture, whose rectangle is `whole`, the part
    // in `visible`. Changes nothing on the screen, but may wait for the server.
    void take(const Picture&, const DeviceRect& whole, const DeviceRect& visible);
    // Moves, maps where `isShown`, and paints what was taken, without flushing or waiting.
    // Where it is blended, a colour leaves out `others`, parts of the screen that other windows
    // paint.
    void show(bool isShown, std::span<const DeviceRect> others = {});
    void showNothing();
    // Paints the last picture where it maps: the server keeps none of an unmapped window.
    void setShown(bool isShown);

private:
    // A picture of that alpha, of that size on the screen, and the part of it that is shown.
    struct OutlineSource {
        std::uint64_t alphaNumber = 0;
        int width = 0;
        int height = 0;
        DeviceRect part;

        friend bool operator==(const OutlineSource&, const OutlineSource&) = default;
    };

    bool map(bool isShown);
    void setProperties();
    void place();
    void leaveOut(std::span<const DeviceRect> others);
    void paintColour(std::uint32_t colour);
    void fill(std::uint32_t colour, std::span<const xcb_rectangle_t> parts);
    void takePixels(const Picture&, const DeviceRect& whole);
    void putPixels();
    void draw(PixelSource&, const DeviceRect& whole, std::span<std::uint32_t> pixels);
    void copy(const Image&, const DeviceRect& whole, std::span<std::uint32_t> pixels) const;
    void stretch(const Image&, const DeviceRect& whole, std::span<std::uint32_t> pixels) const;
    void paint();
    void follow(std::uint64_t alphaNumber, const DeviceRect& whole, std::span<std::uint32_t> pixels);
    void shape();

    Connection& m_connection;
    const PictureFormat m_format;
    const xcb_window_t m_window;
    const xcb_gcontext_t m_graphics;
    DeviceRect m_frame;
    DeviceRect m_placed;  // the frame that the server knows
    bool m_isMapped = false;
    PictureBuffer m_buffer;
    Image m_drawn;                           // what a source draws of which a part is shown, or which is stretched
    std::optional<std::uint32_t> m_colour;   // what was taken last, where it was no pixels
    std::vector<xcb_rectangle_t> m_leftOut;  // of the colour
    PictureOutline m_outline;
    bool m_hasNewOutline = false;
    OutlineSource m_outlineSource;
};

}  // namespace Platform::X11

// Brings rectangles of drawables, and what was painted on canvases, into memory, any number
// of them in one round trip. A local server copies and paints straight into memory that it
// shares with us, and answers once; it answers each single request to read with a message of
// its own, for which this process would wake. One with memory of its own is asked to read
// into shared memory, one that refuses that, too, sends the pixels.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "Platform/X11/Capture/CaptureServer.h"
#include "Platform/X11/Capture/ServerCanvases.h"
#include "Platform/X11/Capture/SharedCanvases.h"
#include "Platform/X11/SharedMemory.h"

namespace Platform::X11 {

class ImageReader {
public:
    explicit ImageReader(CaptureServer&);
    ~ImageReader();
    ImageReader(const ImageReader&) = delete;
    ImageReader& operator=(const ImageReader&) = delete;

    // The pictures of the calls before are gone. `pixels` is what the next ones have together
    // at most.
    void begin(std::size_t pixels);
    // True where canvases are the cheapest way for everything.
    bool sharesCanvases() const { return m_sharesCanvases; }

    // A picture of `area`, which lies in the drawable, in its coordinates. Returns its
    // number.
    std::size_t add(xcb_drawable_t, const DeviceRect& area);
    // A picture of what is painted on the canvas before read(). The canvas is valid until the
    // next call.
    Canvas& addCanvas(const DeviceRect& size, std::size_t& number);

    // Not where canvases are shared: a picture that is to be put together from parts.
    std::size_t addPicture(const DeviceRect& size);
    // The part's pixels follow each other in the picture that was added last, from `offset`
    // on. Of parts that overlap the last one counts.
    void addPart(xcb_drawable_t, const DeviceRect& area, std::size_t offset);
    // False when the server refused one.
    bool read();
    // An error of the connection came in.
    void failed(const xcb_generic_error_t& error) { m_sharedCanvases.failed(error); }
    // True when what was read is not what was to be painted, and may be next time.
    bool hasFailed() const { return m_sharedCanvases.hasFailed(); }

    // 0xXXRRGGBB, rows without padding; valid until the next begin().
    std::span<const std::uint32_t> pixels(std::size_t number) const;

private:
    struct Picture {
        std::size_t offset;  // in pixels
        std::size_t size;
        const std::uint32_t* onCanvas;  // null: in what is read
    };
    struct Request {
        xcb_drawable_t drawable;
        DeviceRect area;
        std::size_t offset;
        unsigned sequence;
    };

    void reserve(std::size_t pixels);
    bool readShared();
    bool readCopied();

    CaptureServer& m_server;
    const xcb_gcontext_t m_graphics;
    SharedCanvases m_sharedCanvases;
    ServerCanvases m_serverCanvases;
    bool m_sharesCanvases = false;
    bool m_usesSharedMemory;
    std::unique_ptr<SharedMemory> m_shared;
    std::vector<std::uint32_t> m_copied;
    std::vector<Picture> m_pictures;
    std::vector<Request> m_requests;
    std::size_t m_size = 0;
};

}  // namespace Platform::X11

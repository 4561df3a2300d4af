// Reading the screen's pixels from below an overlay.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "Platform/Geometry.h"
#include "Platform/Image.h"
#include "Platform/PixelRows.h"

namespace Platform {

enum class CaptureResolution {
    nominal,  // one image pixel per point, the nearest device pixel
    best,     // one image pixel per device pixel
};

// How true an answer is to the screen of this moment.
enum class CaptureTruth {
    none,       // no capture: not permitted, not possible; the image is empty
    exact,      // every pixel is what lies beneath now
    recovered,  // some pixels are the last ones seen before an overlay covered them
    still,      // nothing new since the last answer; image and rows are not touched
};

struct Captured {
    Image image;
    // Where the caller allows it, the picture may come as rows instead, and the image be
    // empty. They show it until the next capture below the same overlay that has something
    // new; until then only the thread that asked may read them.
    bool mayBeRows = false;
    std::shared_ptr<const PixelRows> rows;
    // The caller has kept the last answers below this overlay and wants none where the same
    // would come again. Either all answers of a request are `still` or no one is.
    bool mayBeStill = false;
    CaptureTruth truth = CaptureTruth::none;
};

class ScreenCapture {
public:
    virtual ~ScreenCapture() = default;

    // What the screen would show in each rectangle (capture space; both edges of a
    // side are rounded to device pixels, halves up) if the overlay with that window
    // number and everything above it were not there. One answer per rectangle, all of
    // the same moment, into `answers`, whose buffers are used again. Pixels outside
    // every screen are transparent (0), all others opaque. `answers` must be as long
    // as `rectangles`. An unknown window number stands for "above everything".
    // Any thread; calls wait for one another.
    virtual void windowsBelow(std::uint32_t windowNumber, CaptureResolution, std::span<const Rect> rectangles, std::span<Captured> answers) = 0;
};

}  // namespace Platform

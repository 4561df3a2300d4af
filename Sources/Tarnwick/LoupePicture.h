// The loupe's picture in device pixels: a sample of the screen stretched into a circle
// without smoothing, with centre lines, a ring around it and a footer below. Masks, ring,
// capsule and text are made once for a size; composing a frame allocates nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Platform/Image.h"
#include "Platform/OverlayWindow.h"
#include "Platform/PixelRows.h"
#include "Platform/ShapePainter.h"

namespace Tarnwick {

// Points, below the circle.
inline constexpr double loupeFooterHeight = 28;

class LoupePicture final : public Platform::PixelSource {
public:
    explicit LoupePicture(Platform::ShapePainter& painter) : m_painter(painter) { }

    // For a circle of that diameter (points, above 0) on a screen of that scale. Where the
    // picture would have more than 2048 rows it is made coarser, so that no stored diameter
    // takes the memory away; size() tells what it is to cover all the same.
    void lay(double diameter, double scale);

    // Points that the picture covers: the view's size, rounded up to whole device pixels.
    Platform::Size size() const;

    // `part` is what the sample holds of the square that fills the circle, in fractions of
    // its side, y downward; around it, and without a sample (null), the backdrop shows. The
    // sample is not owned and must stay as it is while the picture is drawn.
    void show(const Platform::PixelRows* sample, const Platform::Rect& part = wholeSquare);

    int width() const override { return m_ornaments.width(); }
    int height() const override { return m_ornaments.height(); }
    void draw(std::span<std::uint32_t> pixels) override;
    // Never 0.
    std::uint64_t alphaNumber() const override { return m_alphaNumber; }

    static constexpr Platform::Rect wholeSquare{0, 0, 1, 1};

private:
    // What is drawn of one row: from `from` to `to`, where from `innerFrom` to `innerTo` the
    // sample shows as it is and beside it lies under ring or clip.
    struct Row {
        std::size_t from = 0;
        std::size_t innerFrom = 0;
        std::size_t innerTo = 0;
        std::size_t to = 0;
    };
    struct Run {
        std::size_t from = 0;
        std::size_t count = 0;
    };
    // A pixel of the circle's rim: this over so much of the sample.
    struct RimPixel {
        std::uint32_t above = 0;
        std::uint32_t share = 0;  // of 255
    };

    void paintOrnaments();
    void cutCircle();
    Row cutRow(std::size_t y, const Platform::Image& clip);
    void layCentreLines();
    void laySample();
    void layRuns();
    void drawCircle(std::uint32_t* to);
    void magnifyRow(std::size_t y);
    void stretchRow(const std::uint32_t* shown);
    void crossRow();
    const RimPixel* putRow(const Row&, const std::vector<std::uint32_t>& shown, std::size_t y, const RimPixel*, std::uint32_t* to) const;

    Platform::ShapePainter& m_painter;
    double m_diameter = 0;
    double m_screenScale = 0;
    double m_scale = 1;
    Platform::Image m_ornaments;  // ring and footer, transparent elsewhere
    const Platform::PixelRows* m_sample = nullptr;
    Platform::Rect m_part = wholeSquare;
    std::uint64_t m_alphaNumber = 1;
    bool m_isSampleOpaque = false;  // all that is drawn of it
    enum class SampleAlpha { none, opaque, mixed };
    SampleAlpha m_drawnAlpha = SampleAlpha::mixed;

    std::size_t m_firstRow = 0;
    std::vector<Row> m_rows;
    std::vector<RimPixel> m_rim;  // in the order of drawing
    std::size_t m_lineFrom = 0;   // the centre lines' columns, which are their rows too
    std::size_t m_lineTo = 0;

    // Of the picture's columns and rows; the one past the sample's last is the backdrop.
    std::vector<std::size_t> m_sampleColumns;
    std::vector<std::size_t> m_sampleRows;
    std::size_t m_sampleWidth = 0;
    std::size_t m_sampleHeight = 0;
    Platform::Rect m_samplePart;
    bool m_showsSampleOnly = false;  // no column is past the sample's last
    // Columns that show successive ones of the sample; none where such runs are short.
    std::vector<Run> m_runs;
    std::vector<std::uint32_t> m_sampleRow;  // room for a row of the sample
    std::vector<std::uint32_t> m_blended;    // a row of it over the backdrop
    std::vector<std::uint32_t> m_row;        // the same, stretched, with the vertical line
    std::vector<std::uint32_t> m_crossing;   // the same within the horizontal line
};

}  // namespace Tarnwick

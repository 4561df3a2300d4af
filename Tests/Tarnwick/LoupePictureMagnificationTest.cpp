// Every pixel of samples of all sides, and where the picture shows it.
#include <gtest/gtest.h>

#include <string>

#include "Support/DrawnImage.h"
#include "Support/FakeShapePainter.h"
#include "Tarnwick/LoupePicture.h"
#include "Tarnwick/NumberedImage.h"

namespace Tarnwick {
namespace {

using Platform::Image;

struct Magnification {
    int diameter;
    int side;
    int scale;
};

class LoupePictureMagnification : public testing::TestWithParam<Magnification> {
protected:
    // Twice the distance of a device pixel's centre from the circle's, so that all is whole.
    static long reach(const Image& image, int x, int y)
    {
        const long dx = 2L * x + 1 - image.width();
        const long dy = 2L * y + 1 - image.width();
        return dx * dx + dy * dy;
    }

    TestSupport::CallLog log;
    TestSupport::FakeShapePainter painter{log};
    LoupePicture picture{painter};
};

// Goes through the sample's pixels, not the picture's: each is a rectangle of device pixels
// whose edges are the first ones whose centres lie past it.
TEST_P(LoupePictureMagnification, ShowsEveryCapturedPixelWhereItBelongs)
{
    const int diameter = GetParam().diameter;
    const int scale = GetParam().scale;
    const int count = GetParam().side * scale;
    const auto sample = numbered(count, count);
    picture.lay(diameter, scale);
    const Platform::ImageRows rows(sample);
    picture.show(&rows);
    const auto image = TestSupport::drawn(picture);
    const long circle = (diameter - 2L) * scale;
    const auto edge = [&](long index) { return static_cast<int>(scale + (2 * index * circle + count - 1) / (2L * count)); };
    const int lineFirst = (diameter * scale - scale + 1) / 2;
    const auto isOnLine = [&](int position) { return position >= lineFirst && position < lineFirst + scale; };
    const long innerSide = (diameter - 4L) * scale;
    const long innerReach = innerSide * innerSide;

    int seen = 0;
    for (int row = 0; row < count; ++row) {
        for (int column = 0; column < count; ++column) {
            const auto captured = sample.pixel(column, row);
            for (int y = edge(row); y < edge(row + 1); ++y) {
                for (int x = edge(column); x < edge(column + 1); ++x) {
                    if (reach(image, x, y) > innerReach)
                        continue;
                    ++seen;
                    const auto expected = isOnLine(x) || isOnLine(y) ? 0xFF000000U | (0xFFFFFFU - (captured & 0xFFFFFFU)) : captured;
                    ASSERT_EQ(image.pixel(x, y), expected) << "sample " << column << " " << row << " at " << x << " " << y;
                }
            }
        }
    }
    const double radius = static_cast<double>(innerSide) / 2;
    EXPECT_NEAR(seen, 3.14159 * radius * radius, 4 * radius);
}

INSTANTIATE_TEST_SUITE_P(AllSides, LoupePictureMagnification,
    testing::Values(Magnification{120, 3, 1}, Magnification{120, 3, 2}, Magnification{140, 13, 1}, Magnification{140, 13, 2},
        Magnification{120, 29, 1}, Magnification{120, 29, 2}, Magnification{220, 55, 1}, Magnification{220, 55, 2}, Magnification{220, 73, 1},
        Magnification{220, 73, 2}, Magnification{400, 399, 1}, Magnification{400, 399, 2}),
    [](const auto& each) {
        return "Side" + std::to_string(each.param.side) + "Diameter" + std::to_string(each.param.diameter) + "Scale" +
            std::to_string(each.param.scale);
    });

}  // namespace
}  // namespace Tarnwick

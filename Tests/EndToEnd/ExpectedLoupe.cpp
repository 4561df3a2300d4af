#include "EndToEnd/ExpectedLoupe.h"

#include <cmath>
#include <cstdlib>
#include <sstream>

#include "EndToEnd/ExpectedScreen.h"

namespace TestSupport {
namespace {

using Platform::Image;

constexpr int footerHeight = 28;
constexpr int shadowReach = 40;
constexpr double ringReach = 3;  // from the edge of the square inward, generously

bool isOn(const Image& image, int x, int y) { return x >= 0 && y >= 0 && x < image.width() && y < image.height(); }

// Black over the pixel. Without a compositor all of the loupe is opaque.
std::uint32_t darkened(std::uint32_t pixel, double alpha, bool isBlended)
{
    std::uint32_t result = 0xff000000;
    for (const unsigned shift : {0U, 8U, 16U})
        result |= static_cast<std::uint32_t>(isBlended ? std::lround(((pixel >> shift) & 0xff) * (1 - alpha)) : 0) << shift;
    return result;
}

int largestDifference(std::uint32_t a, std::uint32_t b)
{
    int largest = 0;
    for (const unsigned shift : {0U, 8U, 16U})
        largest = std::max(largest, std::abs(static_cast<int>((a >> shift) & 0xff) - static_cast<int>((b >> shift) & 0xff)));
    return largest;
}

class Comparison {
public:
    Comparison(const ExpectedLoupe& loupe, const Image& beneath, const Image& actual)
        : m_loupe(loupe), m_beneath(beneath), m_actual(actual), m_side(loupe.diameter * loupe.scale), m_left(loupe.x - m_side / 2),
          m_top(loupe.y - m_side / 2)
    {
    }

    std::optional<std::string> run()
    {
        compareSurroundings();
        compareCircle();
        compareCapsule();
        if (m_count == 0)
            return std::nullopt;
        return std::to_string(m_count) + " pixels differ, the first: " + m_first.str();
    }

private:
    void expect(int x, int y, std::uint32_t expected, int tolerance, const char* what)
    {
        if (!isOn(m_actual, x, y) || largestDifference(m_actual.pixel(x, y), expected) <= tolerance)
            return;
        if (m_count++ == 0)
            m_first << what << " (" << x << ", " << y << ") is " << std::hex << m_actual.pixel(x, y) << ", not " << expected;
    }

    void compareSurroundings()
    {
        const int reach = m_loupe.isBlended ? shadowReach : 0;
        const int bottom = m_top + m_side + footerHeight * m_loupe.scale;
        for (int y = 0; y < m_actual.height(); ++y) {
            for (int x = 0; x < m_actual.width(); ++x) {
                const bool isNear = x >= m_left - reach && y >= m_top - reach && x < m_left + m_side + reach && y < bottom + reach;
                if (!isNear || (!m_loupe.isBlended && isCorner(x, y)))
                    expect(x, y, m_beneath.pixel(x, y), 0, "outside");
            }
        }
    }

    // In the circle's square, and well outside the circle.
    bool isCorner(int x, int y) const { return y < m_top + m_side && distance(x, y) > m_side / 2.0 + 1; }
    double distance(int x, int y) const { return std::hypot(x + 0.5 - m_left - m_side / 2.0, y + 0.5 - m_top - m_side / 2.0); }

    void compareCircle()
    {
        for (int y = m_top; y < m_top + m_side; ++y) {
            for (int x = m_left; x < m_left + m_side; ++x) {
                if (distance(x, y) < m_side / 2.0 - ringReach * m_loupe.scale)
                    compareMagnified(x, y);
            }
        }
    }

    void compareMagnified(int x, int y)
    {
        const int column = sampleAt(x - m_left) + m_loupe.x;
        const int row = sampleAt(y - m_top) + m_loupe.y;
        const bool isSeen = m_loupe.hasSample && isOn(m_beneath, column, row);
        auto expected = isSeen ? m_beneath.pixel(column, row) : darkened(isOn(m_beneath, x, y) ? m_beneath.pixel(x, y) : 0, 0.15, m_loupe.isBlended);
        const bool isOnLine = isMiddle(x - m_left) || isMiddle(y - m_top);
        if (isOnLine)
            expected = isSeen ? inverse(expected) : 0xffffffff;
        expect(x, y, expected, isSeen ? 0 : 2, "magnified");
    }

    // Which device pixel a column of the circle's square shows, from the pointer's.
    int sampleAt(int position) const
    {
        const int count = m_loupe.sampleSide * m_loupe.scale;
        const double stretched = (position + 0.5 - m_loupe.scale) * count / (m_side - 2 * m_loupe.scale);
        return static_cast<int>(std::floor(stretched)) - (m_loupe.sampleSide - 1) / 2 * m_loupe.scale;
    }

    // A line of one point.
    bool isMiddle(int position) const
    {
        const int first = static_cast<int>(std::floor(m_side / 2.0 - m_loupe.scale / 2.0 + 0.5));
        return position >= first && position < first + m_loupe.scale;
    }

    // Above the words, in the middle of the footer.
    void compareCapsule()
    {
        const int y = m_top + m_side + 5 * m_loupe.scale;
        for (int x = m_loupe.x - 40; x < m_loupe.x + 40; ++x) {
            if (isOn(m_beneath, x, y))
                expect(x, y, darkened(m_beneath.pixel(x, y), 0.62, m_loupe.isBlended), 2, "capsule");
        }
    }

    const ExpectedLoupe& m_loupe;
    const Image& m_beneath;
    const Image& m_actual;
    const int m_side;
    const int m_left;
    const int m_top;
    long m_count = 0;
    std::ostringstream m_first;
};

}  // namespace

std::optional<std::string> whatIsWrong(const ExpectedLoupe& loupe, const Image& beneath, const Image& actual)
{
    if (beneath.width() != actual.width() || beneath.height() != actual.height())
        return "the sizes differ";
    return Comparison(loupe, beneath, actual).run();
}

}  // namespace TestSupport

#include "Support/FakeScreenCapture.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

namespace TestSupport {
namespace {

int extent(double start, double length) { return static_cast<int>(std::floor(start + length + 0.5) - std::floor(start + 0.5)); }

bool hasPixels(const Platform::Rect& rectangle) { return extent(rectangle.x, rectangle.width) > 0 && extent(rectangle.y, rectangle.height) > 0; }

void fill(Platform::Captured& answer, const Platform::Rect& rectangle, std::uint32_t colour)
{
    answer.image.resize(extent(rectangle.x, rectangle.width), extent(rectangle.y, rectangle.height));
    std::fill(answer.image.pixels().begin(), answer.image.pixels().end(), colour);
    answer.truth = Platform::CaptureTruth::exact;
}

void deny(Platform::Captured& answer)
{
    answer.image.resize(0, 0);
    answer.truth = Platform::CaptureTruth::none;
}

class OwnRows final : public Platform::PixelRows {
public:
    explicit OwnRows(Platform::Image image) : m_image(std::move(image)) { }
    int width() const override { return m_image.width(); }
    int height() const override { return m_image.height(); }
    // The one way or the other.
    std::span<const std::uint32_t> row(int y, std::span<std::uint32_t> scratch) const override
    {
        const auto row = Platform::ImageRows(m_image).row(y, scratch);
        if (y % 2 == 0)
            return row;
        std::copy(row.begin(), row.end(), scratch.begin());
        return scratch.first(row.size());
    }

private:
    Platform::Image m_image;
};

void turnIntoRows(Platform::Captured& answer)
{
    answer.rows = std::make_shared<const OwnRows>(std::move(answer.image));
    answer.image.resize(0, 0);
}

}  // namespace

void FakeScreenCapture::setAnswer(const Platform::Rect& rectangle, std::optional<Platform::Image> image)
{
    std::erase_if(m_answers, [&](const auto& former) { return former.first == rectangle; });
    m_answers.emplace_back(rectangle, std::move(image));
}

void FakeScreenCapture::windowsBelow(std::uint32_t windowNumber, Platform::CaptureResolution resolution, std::span<const Platform::Rect> rectangles,
    std::span<Platform::Captured> answers)
{
    if (rectangles.size() != answers.size())
        throw std::logic_error("as many answers as rectangles are wanted");
    if (m_log.isRecording()) {
        const auto* name = resolution == Platform::CaptureResolution::nominal ? " nominal" : " best";
        m_log.add("screenCapture.windowsBelow " + std::to_string(windowNumber) + name);
        m_requests.push_back({windowNumber, resolution, {rectangles.begin(), rectangles.end()}});
    }
    if (m_isStill && std::all_of(answers.begin(), answers.end(), [](const auto& answer) { return answer.mayBeStill; })) {
        for (auto& answer : answers)
            answer.truth = Platform::CaptureTruth::still;
        return;
    }
    for (std::size_t i = 0; i < rectangles.size(); ++i) {
        answers[i].rows.reset();
        answer(rectangles[i], answers[i]);
        if (m_areRows && answers[i].mayBeRows && answers[i].truth != Platform::CaptureTruth::none)
            turnIntoRows(answers[i]);
    }
}

void FakeScreenCapture::answer(const Platform::Rect& rectangle, Platform::Captured& answer) const
{
    const auto scripted = std::find_if(m_answers.begin(), m_answers.end(), [&](const auto& entry) { return entry.first == rectangle; });
    if (scripted == m_answers.end() && m_colour && hasPixels(rectangle)) {
        fill(answer, rectangle, *m_colour);
    } else if (scripted != m_answers.end() && scripted->second) {
        answer.image = *scripted->second;
        answer.truth = Platform::CaptureTruth::exact;
    } else {
        deny(answer);
    }
}

}  // namespace TestSupport

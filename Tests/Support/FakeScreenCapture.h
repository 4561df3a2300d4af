// A screen whose pixels the test scripts: one plain colour, and a picture of its own for
// chosen rectangles. Calls are recorded while the log records.
//
// Lines: "screenCapture.windowsBelow 7 nominal".
#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "Platform/ScreenCapture.h"
#include "Support/CallLog.h"

namespace TestSupport {

class FakeScreenCapture : public Platform::ScreenCapture {
public:
    struct Request {
        std::uint32_t windowNumber = 0;
        Platform::CaptureResolution resolution = Platform::CaptureResolution::nominal;
        std::vector<Platform::Rect> rectangles;
    };

    explicit FakeScreenCapture(CallLog& log) : m_log(log) { }

    // What every rectangle shows that has no answer of its own; nothing: no capture.
    void setColour(std::optional<std::uint32_t> colour) { m_colour = colour; }

    // The answer for exactly this rectangle; nothing: no capture.
    void setAnswer(const Platform::Rect&, std::optional<Platform::Image>);

    // As rows where the caller allows that; at first it is images always.
    void setAnswersInRows(bool areRows) { m_areRows = areRows; }

    // Nothing is new to callers who allow that answer.
    void setStill(bool isStill) { m_isStill = isStill; }

    const std::vector<Request>& requests() const { return m_requests; }

    void windowsBelow(std::uint32_t windowNumber, Platform::CaptureResolution, std::span<const Platform::Rect> rectangles,
        std::span<Platform::Captured> answers) override;

private:
    void answer(const Platform::Rect&, Platform::Captured&) const;

    CallLog& m_log;
    std::optional<std::uint32_t> m_colour = 0xFF000000;
    std::vector<std::pair<Platform::Rect, std::optional<Platform::Image>>> m_answers;
    std::vector<Request> m_requests;
    bool m_areRows = false;
    bool m_isStill = false;
};

}  // namespace TestSupport

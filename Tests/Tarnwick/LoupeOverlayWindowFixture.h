// The loupe's window on the recording fake of the whole seam.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "Support/FakeSystem.h"
#include "Tarnwick/LoupeOverlayWindow.h"

namespace Tarnwick {

inline constexpr std::uint16_t key1 = 18;
inline constexpr std::uint16_t key2 = 19;
inline constexpr std::uint16_t keyComma = 43;
inline constexpr std::uint16_t keyPeriod = 47;
inline constexpr std::uint16_t keyEscape = 53;

class LoupeOverlayWindowTest : public testing::Test {
protected:
    LoupeOverlayWindowTest()
    {
        fake.screens.set({{"MAIN", {0, 0, 1512, 982}, 1}});
        fake.pointer.moveTo(Platform::Point{500, 300});
    }

    void open()
    {
        loupe = std::make_unique<LoupeOverlayWindow>(fake.system, fake.shapePainter, [this] { ++dismissals; });
    }

    void openWith(const std::optional<Platform::DefaultsValue>& diameter, const std::optional<Platform::DefaultsValue>& zoom)
    {
        if (diameter)
            fake.userDefaults.values()["loupe.diameter"] = *diameter;
        if (zoom)
            fake.userDefaults.values()["loupe.zoom"] = *zoom;
        open();
    }

    void press(std::uint16_t key, std::uint32_t modifiers = 0, bool isRepeat = false)
    {
        window().deliverKeyDown({.keyCode = key, .modifiers = modifiers, .isRepeat = isRepeat});
    }

    TestSupport::FakeOverlayWindow& window() { return fake.overlayWindows.last(); }
    const TestSupport::FakeScreenCapture::Request& lastCapture() { return fake.screenCapture.requests().back(); }
    double sampleSide() { return lastCapture().rectangles[0].width; }
    double sampleSideOf(double diameter, double zoom)
    {
        openWith(diameter, zoom);
        return sampleSide();
    }

    std::optional<double> stored(const std::string& key) { return fake.userDefaults.doubleValue(key); }

    TestSupport::FakeSystem fake;
    int dismissals = 0;
    std::unique_ptr<LoupeOverlayWindow> loupe;
};

}  // namespace Tarnwick

// What the screen must look like with the loupe on it, reckoned from what lies beneath.
#pragma once

#include <optional>
#include <string>

#include "Platform/Image.h"

namespace TestSupport {

struct ExpectedLoupe {
    // The pointer, in device pixels: the loupe's circle is centred on this pixel's top-left
    // corner, and this pixel is in the middle of the sample. Even at scale 2.
    int x = 0;
    int y = 0;
    int diameter = 220;      // points
    int sampleSide = 55;     // points
    int scale = 1;           // device pixels per point
    bool isBlended = false;  // by a compositor, which may also draw a shadow around it
    bool hasSample = true;   // else the backdrop shows, with the lines plain on it
};

// Nothing when every pixel is right, else how many are not and the first of them. Left out
// are the ring, the words and the place of the shadow.
std::optional<std::string> whatIsWrong(const ExpectedLoupe&, const Platform::Image& beneath, const Platform::Image& actual);

}  // namespace TestSupport

// What the command line asks for.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "Desktop.h"

namespace Benchmarks {

struct Parts {
    bool processorTime = false;
    bool keyToPicture = false;
    bool rest = false;
    bool loupe = false;
};

inline constexpr Parts allParts{.processorTime = true, .keyToPicture = true, .rest = true, .loupe = true};

struct Options {
    std::string programPath;   // empty: only the floor is measured
    std::string markdownPath;  // empty: no file
    bool hasMovingFloor = false;
    bool isQuick = false;
    Parts parts = allParts;  // what is measured
    std::vector<Setup> setups;
    int rounds = 5;
    std::chrono::milliseconds roundLength{3000};
    int presses = 40;
    std::chrono::seconds idleLength{60};
    Setup memorySetup;

    // Nothing when the arguments make no sense; a line on standard error then says which
    // there are.
    static std::optional<Options> parse(int argc, char** argv);
};

}  // namespace Benchmarks

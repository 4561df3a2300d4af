#include "Options.h"

#include <cstdio>
#include <span>
#include <string_view>

namespace Benchmarks {
namespace {

const std::vector<Setup> screens = {{"1080p", 1920, 1080}, {"4K", 3840, 2160}, {"8K", 7680, 4320}};

std::vector<Setup> allSetups()
{
    std::vector<Setup> setups = screens;
    for (auto setup : screens) {
        setup.hasCompositor = true;
        setups.push_back(setup);
    }
    return setups;
}

void makeQuick(Options& options)
{
    using namespace std::chrono_literals;
    options.setups = {screens.front()};
    options.memorySetup = screens.front();
    options.isQuick = true;
    options.rounds = 1;
    options.roundLength = 500ms;
    options.presses = 3;
    options.idleLength = 1s;
}

// False when it names none.
bool addPart(Parts& parts, std::string_view name)
{
    if (name == "--crosshair")
        parts.processorTime = parts.keyToPicture = parts.rest = true;
    else if (name == "--processor-time")
        parts.processorTime = true;
    else if (name == "--key-to-picture")
        parts.keyToPicture = true;
    else if (name == "--rest")
        parts.rest = true;
    else if (name == "--loupe")
        parts.loupe = true;
    else
        return false;
    return true;
}

std::optional<Options> sayUsage()
{
    std::fputs("usage: tarnwick_bench [--program PATH] [--markdown FILE] [--quick] [--rounds N] [--presses N] [--only 1080p|4K|8K] [--moving-floor] "
               "[--crosshair] [--processor-time] [--key-to-picture] [--rest] [--loupe]\n",
        stderr);
    return std::nullopt;
}

}  // namespace

std::optional<Options> Options::parse(int argc, char** argv)
{
    Options options;
    options.setups = allSetups();
    options.memorySetup = screens.back();
    Parts named;
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const std::string_view name = arguments[i];
        if (name == "--quick") {
            makeQuick(options);
            continue;
        }
        if (addPart(named, name)) {
            options.parts = named;
            continue;
        }
        if (name == "--moving-floor") {
            options.hasMovingFloor = true;
            continue;
        }
        if (i + 1 == arguments.size())
            return sayUsage();
        const std::string value = arguments[++i];
        if (name == "--program")
            options.programPath = value;
        else if (name == "--markdown")
            options.markdownPath = value;
        else if (name == "--rounds")
            options.rounds = std::max(1, std::atoi(value.c_str()));
        else if (name == "--presses")
            options.presses = std::max(1, std::atoi(value.c_str()));
        else if (name == "--only")
            std::erase_if(options.setups, [&](const Setup& setup) { return setup.screenName != value; });
        else
            return sayUsage();
    }
    return options.setups.empty() ? sayUsage() : options;
}

}  // namespace Benchmarks

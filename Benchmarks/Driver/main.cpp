// Measures how fast the program is, beside the least that any crosshair must do, all in
// one run on private desktops.
#include <sys/prctl.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>

#include "KeyToPictureBenchmark.h"
#include "LoupeBenchmark.h"
#include "Machine.h"
#include "Options.h"
#include "ProcessorTimeBenchmark.h"
#include "Report.h"
#include "RestBenchmark.h"

namespace {

using namespace Benchmarks;

void say(const std::string& what) { std::fprintf(stderr, "==> %s\n", what.c_str()); }

void addProcessorTime(Report& result, const Options& options)
{
    std::vector<ProcessorTimeFigures> figures;
    for (const auto& setup : options.setups) {
        say("Processor time: " + setup.name());
        figures.push_back(measureProcessorTime(setup, options));
    }
    result.heading("Processor time while the pointer circles");
    result.paragraph("Milliseconds of processor time per second of client and X server together, medians of " + std::to_string(options.rounds) +
        " rounds of " + format(std::chrono::duration<double>(options.roundLength).count(), 1) +
        " s, in each round one after the other. What the circling pointer alone costs is taken off the figures to its right.");
    report(result, figures);
}

void addKeyToPicture(Report& result, const Options& options)
{
    std::vector<KeyToPictureFigures> figures;
    for (const auto& setup : options.setups) {
        say("From key press to picture: " + setup.name());
        figures.push_back(measureKeyToPicture(setup, options));
    }
    result.heading("From key press to first right picture");
    result.paragraph(
        "Seen in the server's frame buffer, looked at every 0.1 ms: that is what a monitor shows, also while the server is busy. "
        "Presses during which the host of this virtual machine ran others on its processors, as far as the kernel's count of 10 ms tells, are "
        "taken again, at most four times as many in all; stolen is how long it did so in those that were kept.");
    report(result, figures);
}

void addRest(Report& result, const Options& options)
{
    say("At rest");
    const auto rest = measureRest(options);
    say("Memory of the X server");
    const auto serverMemory = measureServerMemory(options);
    result.heading("At rest, and memory");
    report(result, options, rest, serverMemory);
}

void addLoupe(Report& result, const Options& options)
{
    result.heading("The loupe beside other magnifiers");
    result.paragraph("Milliseconds of processor time per second of the program and the X server together, medians of " +
        std::to_string(options.rounds) + " rounds of " + format(std::chrono::duration<double>(options.roundLength).count(), 1) +
        " s, in each round one after the other, less what the pointer alone costs. Pictures are counted by looking at the middle of the window 1,000 "
        "times a second; the lag is from a "
        "move of the pointer to the first other picture there.");
    for (const auto& setup : options.setups) {
        if (setup.screenName != "1080p")
            continue;
        say("The loupe: " + setup.name());
        report(result, measureLoupe(setup, options));
    }
}

void run(const Options& options)
{
    Report result;
    result.list(describeMachine());
    const bool hasProgram = !options.programPath.empty();
    if (options.parts.processorTime)
        addProcessorTime(result, options);
    if (options.parts.keyToPicture && hasProgram)
        addKeyToPicture(result, options);
    if (options.parts.rest && hasProgram)
        addRest(result, options);
    if (options.parts.loupe && hasProgram)
        addLoupe(result, options);
    std::fputs(result.text().c_str(), stdout);
    if (!options.markdownPath.empty())
        std::ofstream(options.markdownPath) << result.text();
}

}  // namespace

int main(int argc, char** argv)
{
    const auto options = Options::parse(argc, argv);
    if (!options)
        return EXIT_FAILURE;
    prctl(PR_SET_TIMERSLACK, 1000);  // nanoseconds: the measurement's own pauses are 0.1 ms
    try {
        run(*options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tarnwick_bench: %s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

#include "KeyToPictureBenchmark.h"

#include <algorithm>

#include "ProcessFigures.h"
#include "Statistics.h"
#include "Support/Desktop/XTestPointer.h"

namespace Benchmarks {
namespace {

using namespace std::chrono_literals;

// What the host of a virtual machine runs meanwhile says nothing about this program. On one
// that is always busy some presses are kept as they are.
constexpr int repeatsOfAPress = 4;

// Spread over the screen, a new place for each press, away from its edges.
void moveToPlace(TestSupport::XTestPointer& pointer, const Setup& setup, int index)
{
    const auto coordinate = [index](int side, int stride) { return side / 10 + (side * 8 / 10) * (index * stride % 101) / 101; };
    pointer.moveTo(coordinate(setup.width, 37), coordinate(setup.height, 59));
}

Report::Row rowOf(const KeyToPictureFigures& figures)
{
    std::vector<double> milliseconds;
    for (const auto& press : figures.presses)
        milliseconds.push_back(press.milliseconds);
    const auto wereRight = std::count_if(figures.presses.begin(), figures.presses.end(), [](const auto& press) { return press.wasFirstChangeRight; });
    constexpr double frame = 1000.0 / 60;
    const auto high = percentile(milliseconds, 0.95);
    return {figures.setup.name(), std::to_string(figures.presses.size()), format(median(milliseconds), 2),
        againstTarget(median(milliseconds), frame, 1), format(high, 2), againstTarget(high, 2 * frame, 1), format(percentile(milliseconds, 1), 2),
        std::to_string(wereRight), std::to_string(figures.repeated), format(std::chrono::duration<double, std::milli>(figures.stolen).count(), 0)};
}

}  // namespace

KeyToPictureFigures measureKeyToPicture(const Setup& screen, const Options& options)
{
    auto setup = screen;
    setup.hasMonitor = true;
    Desktop desktop(setup);
    TestSupport::XTestPointer pointer(desktop.displayName());
    Crosshair crosshair(desktop, options.programPath);
    KeyToPictureFigures figures;
    figures.setup = setup;
    const int mostRepeated = repeatsOfAPress * options.presses;
    for (int i = 0; std::ssize(figures.presses) < options.presses; ++i) {
        moveToPlace(pointer, setup, i);
        waitUntilAtRest(desktop.serverPid());
        const auto stolenBefore = stolenTime();
        const auto latency = crosshair.showMeasured();
        const auto stolen = stolenTime() - stolenBefore;
        crosshair.hide();
        waitUntilAtRest(crosshair.pid());
        if (stolen > 0ns && figures.repeated < mostRepeated) {
            ++figures.repeated;
            continue;
        }
        figures.presses.push_back(latency);
        figures.stolen += stolen;
    }
    return figures;
}

void report(Report& report, const std::vector<KeyToPictureFigures>& all)
{
    std::vector<Report::Row> rows = {{"screen", "presses", "median, ms", "target", "95th percentile, ms", "target", "slowest, ms",
        "right at first sight", "taken again", "stolen, ms"}};
    for (const auto& figures : all)
        rows.push_back(rowOf(figures));
    report.table(rows);
}

}  // namespace Benchmarks

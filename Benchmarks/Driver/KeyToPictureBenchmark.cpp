#include "KeyToPictureBenchmark.h"

#include <algorithm>

#include "Statistics.h"
#include "Support/Desktop/XTestPointer.h"

namespace Benchmarks {
namespace {

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
        std::to_string(wereRight)};
}

}  // namespace

KeyToPictureFigures measureKeyToPicture(const Setup& screen, const Options& options)
{
    auto setup = screen;
    setup.hasMonitor = true;
    Desktop desktop(setup);
    TestSupport::XTestPointer pointer(desktop.displayName());
    Crosshair crosshair(desktop, options.programPath);
    KeyToPictureFigures figures{setup, {}};
    for (int i = 0; i < options.presses; ++i) {
        moveToPlace(pointer, setup, i);
        waitUntilAtRest(desktop.serverPid());
        figures.presses.push_back(crosshair.showMeasured());
        crosshair.hide();
        waitUntilAtRest(crosshair.pid());
    }
    return figures;
}

void report(Report& report, const std::vector<KeyToPictureFigures>& all)
{
    std::vector<Report::Row> rows = {
        {"screen", "presses", "median, ms", "target", "95th percentile, ms", "target", "slowest, ms", "right at first sight"}};
    for (const auto& figures : all)
        rows.push_back(rowOf(figures));
    report.table(rows);
}

}  // namespace Benchmarks

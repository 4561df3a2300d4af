#include "LoupeBenchmark.h"

#include <linux/input-event-codes.h>

#include <chrono>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <thread>

#include "Magnifier.h"
#include "Statistics.h"
#include "Support/Desktop/ForeignHotKey.h"
#include "Support/Desktop/XTestPointer.h"
#include "Support/WaitUntil.h"
#include "Support/XTestKeyboard.h"

namespace Benchmarks {
namespace {

using namespace std::chrono_literals;

struct Other {
    std::string name;
    std::vector<std::string> command;
};
const std::vector<Other> others = {{"kmag", {"kmag"}}, {"magnus", {"magnus"}}, {"gpick's picker", {"gpick", "--pick"}}};

std::string nameOf(const LoupeLook& look) { return std::to_string(look.diameter) + " points, zoom " + std::to_string(look.zoom); }

std::vector<LoupeLook> looksFor(const Options& options)
{
    if (options.isQuick)
        return {{220, 4}};
    std::vector<LoupeLook> looks;
    for (const int diameter : {120, 220, 400}) {
        for (const int zoom : {1, 4, 10})
            looks.push_back({diameter, zoom});
    }
    return looks;
}

class Measurement {
public:
    Measurement(const Setup& setup, const Options& options)
        : m_options(options), m_desktop(setup), m_pointer(m_desktop.displayName()), m_lines(m_desktop.displayName()),
          m_meter(m_desktop, m_lines, options), m_keyboard(m_desktop.displayName())
    {
        rest();
    }

    LoupeFigures run(const Setup& setup)
    {
        LoupeFigures figures;
        figures.setup = setup;
        for (int round = 0; round < m_options.rounds; ++round) {
            figures.circling.push_back(m_meter.whileCircling({}));
            rest();
            figures.resting.push_back(m_meter.whileStill({}));
        }
        measureLoupes(figures);
        for (const auto& other : others) {
            if (TestSupport::programExists(other.command.front()))
                figures.others.push_back(measureOther(other));
            else
                figures.missing.push_back(other.name);
        }
        return figures;
    }

private:
    void rest() { m_pointer.moveTo(m_lines.screenWidth() / 3, m_lines.screenHeight() / 3); }

    void measureLoupes(LoupeFigures& figures)
    {
        const auto process = m_desktop.start({m_options.programPath});
        if (!TestSupport::waitUntil([this] { return TestSupport::isHotKeyTaken(m_desktop.displayName(), KEY_L, XCB_MOD_MASK_4 | XCB_MOD_MASK_1); }))
            throw std::runtime_error("the program does not take its shortcut");
        waitUntilAtRest(process.pid());
        for (const auto& look : looksFor(m_options)) {
            rest();
            const auto windowsBefore = Magnifier::windowsOf(m_desktop);
            store(look);
            pressShortcut();
            figures.loupes.push_back(measure(nameOf(look), process.pid(), Magnifier(m_desktop, windowsBefore)));
            pressShortcut();
            waitUntilAtRest(process.pid());
        }
    }

    // Among what the program has stored itself; it reads afresh.
    void store(const LoupeLook& look) const
    {
        const auto file = m_desktop.home() / "tarnwick" / "defaults.json";
        std::ifstream stored(file);
        auto settings = nlohmann::json::parse(stored);
        settings["loupe.diameter"] = look.diameter;
        settings["loupe.zoom"] = look.zoom;
        std::ofstream(file) << settings;
    }

    void pressShortcut() { m_keyboard.chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_L}); }

    MagnifierFigures measureOther(const Other& other)
    {
        rest();
        const auto windowsBefore = Magnifier::windowsOf(m_desktop);
        const auto process = m_desktop.start(other.command);
        const Magnifier magnifier(m_desktop, windowsBefore);
        std::this_thread::sleep_for(3s);  // such a program never comes to rest
        return measure(other.name, process.pid(), Magnifier(m_desktop, windowsBefore));
    }

    MagnifierFigures measure(const std::string& name, pid_t pid, const Magnifier& magnifier)
    {
        MagnifierFigures figures;
        figures.name = name;
        for (int round = 0; round < m_options.rounds; ++round) {
            figures.moving.push_back(m_meter.whileCircling(pid));
            rest();
            std::this_thread::sleep_for(500ms);
            figures.still.push_back(m_meter.whileStill(pid));
        }
        {
            const auto circling = startCircling(m_desktop, m_lines);
            figures.picturesPerSecond = magnifier.picturesPerSecond();
        }
        figures.lags = magnifier.lags(m_options.isQuick ? 3 : m_options.presses);
        return figures;
    }

    const Options& m_options;
    Desktop m_desktop;
    TestSupport::XTestPointer m_pointer;
    LineReader m_lines;
    CostMeter m_meter;
    TestSupport::XTestKeyboard m_keyboard;
};

double medianOf(const std::vector<Cost>& costs)
{
    std::vector<double> values;
    values.reserve(costs.size());
    for (const auto& cost : costs)
        values.push_back(cost.clientAndServer());
    return median(values);
}

double moving(const MagnifierFigures& figures, const LoupeFigures& all) { return medianOf(figures.moving) - medianOf(all.circling); }
double still(const MagnifierFigures& figures, const LoupeFigures& all) { return medianOf(figures.still) - medianOf(all.resting); }
double perPicture(const MagnifierFigures& figures, const LoupeFigures& all) { return moving(figures, all) / figures.picturesPerSecond; }

Report::Row rowOf(const MagnifierFigures& figures, const LoupeFigures& all)
{
    const bool hasLags = !figures.lags.empty();
    return {figures.name, format(moving(figures, all), 1), format(still(figures, all), 1), format(figures.picturesPerSecond, 1),
        figures.picturesPerSecond > 0 ? format(perPicture(figures, all), 3) : "none seen", hasLags ? format(median(figures.lags), 1) : "none seen",
        hasLags ? format(percentile(figures.lags, 0.95), 1) : "none seen"};
}

// The dearest loupe against each of the others, picture for picture.
void reportRatios(Report& report, const LoupeFigures& figures)
{
    for (const auto& other : figures.others) {
        if (other.picturesPerSecond <= 0)
            continue;
        double least = 0;
        double most = 0;
        for (const auto& loupe : figures.loupes) {
            if (loupe.picturesPerSecond <= 0)
                continue;
            const double ratio = perPicture(loupe, figures) / perPicture(other, figures);
            least = least == 0 ? ratio : std::min(least, ratio);
            most = std::max(most, ratio);
        }
        report.paragraph("A picture of the loupe costs " + format(least, 2) + " to " + format(most, 2) + " times one of " + other.name + ", target " +
            againstTarget(most, 1, 0) + ".");
    }
}

}  // namespace

LoupeFigures measureLoupe(const Setup& setup, const Options& options) { return Measurement(setup, options).run(setup); }

void report(Report& report, const LoupeFigures& figures)
{
    report.paragraph(figures.setup.name() + ":");
    std::vector<Report::Row> rows = {
        {"magnifier", "ms/s, pointer circles", "ms/s, pointer rests", "pictures/s", "ms per picture", "lag, median ms", "lag, 95 % ms"}};
    for (const auto* part : {&figures.loupes, &figures.others}) {
        for (const auto& magnifier : *part)
            rows.push_back(rowOf(magnifier, figures));
    }
    report.table(rows);
    reportRatios(report, figures);
    std::vector<double> lags;
    for (const auto& loupe : figures.loupes)
        lags.insert(lags.end(), loupe.lags.begin(), loupe.lags.end());
    if (!lags.empty())
        report.paragraph(
            "Lag of the loupe over all sizes: median " + format(median(lags), 1) + " ms, target " + againstTarget(median(lags), 17, 0) + ".");
    for (const auto& name : figures.missing)
        report.paragraph("Not installed here, so not measured: " + name + ".");
}

}  // namespace Benchmarks

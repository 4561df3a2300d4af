// The program under measurement, driven as a person does: by its shortcut.
#pragma once

#include <string>

#include "Desktop.h"
#include "Lines.h"
#include "Support/XTestKeyboard.h"

namespace Benchmarks {

class Crosshair {
public:
    // Returns when the program has started and come to rest. Throws when it ends.
    Crosshair(const Desktop&, const std::string& programPath);

    pid_t pid() const { return m_process.pid(); }

    // Return when it is seen, or gone. Throw when that does not happen: seen it is when
    // both lines show exactly the inverse of what was there before. The pointer must stand
    // still, at the end where it stood at the beginning.
    void show();
    void hide();
    // The same as of this moment, without waiting.
    bool isRight() const;

    struct Latency {
        double milliseconds = 0;           // until both lines were right
        bool wasFirstChangeRight = false;  // of each line; else something else was seen before
    };
    // The same as show(), measured from before the key press: on the monitor where there is
    // one, which shows what is there also while the server is busy.
    Latency showMeasured();

private:
    LinePieces look() const;
    void pressShortcut();
    std::runtime_error failure(const std::string& what);

    const Desktop& m_desktop;
    TestSupport::Process m_process;
    TestSupport::XTestKeyboard m_keyboard;
    LineReader m_lines;
    Platform::X11::DevicePoint m_crossing;
    LinePieces m_beneath;
};

}  // namespace Benchmarks

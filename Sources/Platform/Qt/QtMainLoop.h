// The main loop as Qt runs it (QCoreApplication::exec), with timers of nanosecond
// intervals: Qt's own count whole milliseconds. Make it after the application object.
#pragma once

#include <memory>

#include "Platform/MainLoop.h"
#include "Platform/Posix/FileDescriptorWatcher.h"
#include "Platform/Qt/QuickTurns.h"

namespace Platform {

class QtMainLoop final : public MainLoop, public FileDescriptorWatcher {
public:
    QtMainLoop();
    ~QtMainLoop() override;

    void post(Task) override;
    std::unique_ptr<Timer> repeatingTimer(std::chrono::nanoseconds interval, std::function<void()> fired) override;
    Token watch(int fileDescriptor, std::function<void()> readable) override;

private:
    struct Tasks;

    const std::unique_ptr<Tasks> m_tasks;
    QuickTurns m_turns;
    Token m_watch;
};

}  // namespace Platform

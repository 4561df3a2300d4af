// Running the main loop (QtMainLoop under a QCoreApplication) until something has
// come true, with a deadline.
#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QEventLoop>
#include <QTimer>
#include <chrono>

namespace TestSupport {

// Deletes at its end what Qt would delete in a later turn of a loop that runs no more.
// Belongs between the application object and the main loop.
struct DeferredDeletes {
    ~DeferredDeletes() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }
};

// Looks after every millisecond of running. False when the deadline passed first.
template <typename Condition> bool loopUntil(Condition&& condition, std::chrono::milliseconds deadline = std::chrono::seconds(10))
{
    const auto end = std::chrono::steady_clock::now() + deadline;
    QEventLoop loop;
    QTimer timer;
    bool hasComeTrue = condition();
    QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
        hasComeTrue = condition();
        if (hasComeTrue || std::chrono::steady_clock::now() >= end)
            loop.quit();
    });
    timer.start(1);
    if (!hasComeTrue)
        loop.exec();
    return hasComeTrue;
}

}  // namespace TestSupport

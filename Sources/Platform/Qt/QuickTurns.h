// Waits for file descriptors in Qt's loop, and while something ticks beside it: most of
// what a turn of Qt's loop costs is the way through all of Qt's and GLib's sources, 60 times
// a second and more often. So after a callback the thread waits for the same file
// descriptors as Qt would have, without going back to it, until one comes that is Qt's.
// Where Qt's loop is not GLib's, every turn is Qt's. Main thread only.
#pragma once

#include <functional>
#include <memory>

#include "Platform/Token.h"

namespace Platform {

class QuickTurns {
public:
    // `aboutToWait` is called before each wait of the thread's.
    explicit QuickTurns(std::function<void()> aboutToWait);
    ~QuickTurns();
    QuickTurns(const QuickTurns&) = delete;
    QuickTurns& operator=(const QuickTurns&) = delete;

    // Calls back whenever the file descriptor can be read, and now and then when it no
    // longer can: reading must not block.
    Token watch(int fileDescriptor, std::function<void()> readable);

    // Turns are quick as long as there is such a token. A timer of Qt's or a source of
    // GLib's that a callback starts meanwhile may be late by 50 ms.
    Token hurry();

private:
    struct State;

    const std::shared_ptr<State> m_state;
};

}  // namespace Platform

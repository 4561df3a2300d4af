// Delivers the events of one connection to its owner, from the main loop only: never
// from inside a request that waits for its reply. Main thread only.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include "Platform/MainLoop.h"
#include "Platform/Posix/FileDescriptorWatcher.h"
#include "Platform/Posix/PausableWatch.h"
#include "Platform/X11/Connection.h"

namespace Platform::X11 {

class EventPump {
public:
    // `handle` gets every event and unclaimed error (response type 0) of the connection.
    EventPump(Connection&, FileDescriptorWatcher&, MainLoop&, std::function<void(const xcb_generic_event_t&)> handle);
    ~EventPump();

    // A round trip reads events into xcb's own queue, where the file descriptor no longer
    // tells of them. Call this after round trips on the connection: it delivers such
    // events in a later turn of the loop.
    void collectAfterRoundTrips();

    // Delivers what has come, and leaves what comes next where it is until the next call,
    // but no longer than so long: a wake-up less for an owner who calls this often.
    void deliverNowAndPause(std::chrono::nanoseconds);
    // Ends the pause.
    void resume();

private:
    void takeInput();
    void collect();
    void deliver();

    Connection& m_connection;
    MainLoop& m_mainLoop;
    std::function<void(const xcb_generic_event_t&)> m_handle;
    std::vector<Event> m_events;
    std::shared_ptr<EventPump*> m_self;  // empties when this goes
    FileDescriptorWatcher& m_watcher;
    Token m_watch;
    std::unique_ptr<Posix::PausableWatch> m_pausableWatch;  // instead, from the first pause on
};

}  // namespace Platform::X11

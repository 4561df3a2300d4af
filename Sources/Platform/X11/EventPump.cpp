#include "Platform/X11/EventPump.h"

#include <utility>

namespace Platform::X11 {

EventPump::EventPump(
    Connection& connection, FileDescriptorWatcher& watcher, MainLoop& mainLoop, std::function<void(const xcb_generic_event_t&)> handle)
    : m_connection(connection), m_mainLoop(mainLoop), m_handle(std::move(handle)), m_self(std::make_shared<EventPump*>(this)), m_watcher(watcher),
      m_watch(watcher.watch(connection.fileDescriptor(), [this] { takeInput(); }))
{
}

EventPump::~EventPump() { *m_self = nullptr; }

void EventPump::collectAfterRoundTrips()
{
    const bool wasEmpty = m_events.empty();
    while (auto event = Event(xcb_poll_for_queued_event(m_connection)))
        m_events.push_back(std::move(event));
    if (wasEmpty && !m_events.empty()) {
        m_mainLoop.post([self = m_self] {
            if (*self != nullptr)
                (*self)->deliver();
        });
    }
}

void EventPump::deliverNowAndPause(std::chrono::nanoseconds duration)
{
    if (m_connection.isBroken())
        return;
    if (!m_pausableWatch) {
        m_watch.release();
        m_pausableWatch = std::make_unique<Posix::PausableWatch>(m_watcher, m_connection.fileDescriptor(), [this] { takeInput(); });
    }
    m_pausableWatch->pauseFor(duration);
    collect();
    deliver();
}

void EventPump::resume()
{
    if (m_pausableWatch)
        m_pausableWatch->resume();
}

void EventPump::takeInput()
{
    if (m_connection.isBroken()) {
        m_watch.release();
        m_pausableWatch.reset();
    }
    collect();
    deliver();
}

void EventPump::collect()
{
    takeArrivedEvents(m_connection, [this](Event event) { m_events.push_back(std::move(event)); });
}

void EventPump::deliver()
{
    const auto self = m_self;
    auto events = std::exchange(m_events, {});
    for (const auto& event : events) {
        if (*self == nullptr)
            return;
        m_handle(*event);
    }
    // The memory is for the next ones.
    events.clear();
    if (*self != nullptr && m_events.empty())
        m_events.swap(events);
}

}  // namespace Platform::X11

#include "Platform/Qt/QuickTurns.h"

#include <glib.h>

#include <QAbstractEventDispatcher>
#include <QSocketNotifier>
#include <algorithm>
#include <array>
#include <chrono>
#include <span>
#include <utility>
#include <vector>

namespace Platform {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// Qt is asked for its timers that often: to ask costs a third of what its turn does.
constexpr milliseconds longestStay{50};

struct Watch {
    int fileDescriptor;
    std::function<void()> readable;
};

// What Qt's loop waits for. The memory is its caller's, as one loop may run inside another.
class QtWait {
public:
    // False when Qt has something to do at once.
    bool ask()
    {
        m_end = steady_clock::now() + longestStay;
        if (g_main_context_prepare(m_context, &m_priority) != 0)
            return false;
        int timeout = 0;
        if (!readFileDescriptors(timeout) || timeout == 0)
            return false;
        if (timeout > 0)
            m_end = std::min(m_end, steady_clock::now() + milliseconds(timeout));
        return true;
    }

    // The file descriptors that have something; none when it is Qt's turn again.
    std::span<const GPollFD> wait()
    {
        int timeout = 0;
        const auto rest = std::chrono::ceil<milliseconds>(m_end - steady_clock::now());
        if (rest.count() <= 0 || !readFileDescriptors(timeout))
            return {};
        const std::span polled(m_polled.data(), m_count);
        if (g_poll(polled.data(), static_cast<unsigned>(m_count), static_cast<int>(rest.count())) <= 0)
            return {};
        const auto quiet = std::partition(polled.begin(), polled.end(), [](const GPollFD& one) { return one.revents != 0; });
        return polled.first(static_cast<std::size_t>(quiet - polled.begin()));
    }

private:
    bool readFileDescriptors(int& timeout)
    {
        const int count = g_main_context_query(m_context, m_priority, &timeout, m_polled.data(), static_cast<int>(m_polled.size()));
        m_count = static_cast<std::size_t>(count);
        return m_count <= m_polled.size();
    }

    GMainContext* const m_context = g_main_context_default();
    int m_priority = 0;
    steady_clock::time_point m_end;
    std::array<GPollFD, 64> m_polled{};  // more than that, and every turn is Qt's
    std::size_t m_count = 0;
};

}  // namespace

struct QuickTurns::State {
    std::vector<std::shared_ptr<const Watch>> watches;
    std::function<void()> aboutToWait;
    int hurries = 0;
    bool isGlib = false;
    bool qtWaits = false;    // in its present turn, rather than only look for input
    bool isQtsTurn = false;  // all of it
    bool isNextTurnQts = false;
    std::array<QMetaObject::Connection, 2> connections;

    std::shared_ptr<const Watch> watchOf(int fileDescriptor) const
    {
        const auto found =
            std::find_if(watches.begin(), watches.end(), [fileDescriptor](const auto& watch) { return watch->fileDescriptor == fileDescriptor; });
        return found == watches.end() ? nullptr : *found;
    }

    bool mayStay() const { return isGlib && hurries > 0 && qtWaits && !isQtsTurn && !isNextTurnQts; }

    // Instead of Qt's next turns. A callback may run a loop of its own, which ends this.
    // Asking makes GLib put off what this turn had still to do. So when there is anything
    // for Qt, its next turn is all its own: however busy we are, it has every other one.
    void stay()
    {
        if (!mayStay())
            return;
        QtWait qt;
        isNextTurnQts = !qt.ask();
        while (mayStay()) {
            aboutToWait();
            if (!serve(qt.wait()))
                return;
        }
    }

    // False when it is Qt's turn.
    bool serve(std::span<const GPollFD> ready)
    {
        isNextTurnQts = !std::all_of(ready.begin(), ready.end(), [this](const GPollFD& one) { return watchOf(one.fd) != nullptr; });
        if (isNextTurnQts || ready.empty())
            return false;
        for (const auto& one : ready) {
            // Another's callback may have ended it.
            if (const auto watch = watchOf(one.fd))
                watch->readable();
        }
        return true;
    }
};

QuickTurns::QuickTurns(std::function<void()> aboutToWait) : m_state(std::make_shared<State>())
{
    m_state->aboutToWait = std::move(aboutToWait);
    auto* const dispatcher = QAbstractEventDispatcher::instance();
    m_state->isGlib = dispatcher->inherits("QEventDispatcherGlib");
    // A turn in which Qt may wait begins with the one and ends with the other; one in which
    // it does not begins with the other.
    auto* const state = m_state.get();
    const auto turnThatWaits = [state] {
        state->qtWaits = true;
        state->isQtsTurn = std::exchange(state->isNextTurnQts, false);
        state->aboutToWait();
    };
    const auto otherwise = [state] {
        state->qtWaits = false;
        state->aboutToWait();
    };
    m_state->connections = {QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, turnThatWaits),
        QObject::connect(dispatcher, &QAbstractEventDispatcher::awake, otherwise)};
}

QuickTurns::~QuickTurns()
{
    for (const auto& connection : m_state->connections)
        QObject::disconnect(connection);
    m_state->qtWaits = false;
}

Token QuickTurns::hurry()
{
    ++m_state->hurries;
    return Token([state = m_state] { --state->hurries; });
}

Token QuickTurns::watch(int fileDescriptor, std::function<void()> readable)
{
    const auto watch = std::make_shared<const Watch>(Watch{fileDescriptor, std::move(readable)});
    m_state->watches.push_back(watch);
    auto* notifier = new QSocketNotifier(fileDescriptor, QSocketNotifier::Read);
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [state = m_state, watch] {
        watch->readable();
        state->stay();
    });
    return Token([state = m_state, watch, notifier] {
        std::erase(state->watches, watch);
        // A callback may end its own watch: the notifier must outlive the call.
        notifier->setEnabled(false);
        notifier->disconnect();
        notifier->deleteLater();
    });
}

}  // namespace Platform

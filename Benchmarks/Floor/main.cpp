// The least that any crosshair must do, as a program to compare with: 60 times a second
// it asks for the pointer, reads the two strips of the screen that cross there, inverts
// them and puts them into two windows one pixel wide. It sees its own lines when it reads,
// takes no keys and no clicks, and its windows stay in the middle of the screen, unless
// --moving is given: then they follow the pointer.
#include <sys/timerfd.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "Platform/X11/Connection.h"
#include "Strip.h"

namespace {

using namespace Benchmarks;
using Platform::X11::Connection;

class Floor {
public:
    Floor(Connection& connection, bool isMoving)
        : m_connection(connection), m_isMoving(isMoving),
          m_horizontal(
              connection, {0, static_cast<std::int16_t>(connection.screen().height_in_pixels / 2)}, {connection.screen().width_in_pixels, 1}),
          m_vertical(connection, {static_cast<std::int16_t>(connection.screen().width_in_pixels / 2), 0}, {1, connection.screen().height_in_pixels})
    {
        connection.flush();
    }

    // False when the server is gone.
    bool tick()
    {
        const auto pointer =
            Platform::X11::adopt(xcb_query_pointer_reply(m_connection, xcb_query_pointer(m_connection, m_connection.root()), nullptr));
        if (!pointer)
            return false;
        const Place row{0, pointer->root_y};
        const Place column{pointer->root_x, 0};
        m_horizontal.request(row);
        m_vertical.request(column);
        const bool hasBoth = m_horizontal.receive() && m_vertical.receive();
        if (m_isMoving) {
            m_horizontal.moveTo(row);
            m_vertical.moveTo(column);
        }
        m_horizontal.put();
        m_vertical.put();
        m_connection.flush();
        return hasBoth;
    }

private:
    Connection& m_connection;
    const bool m_isMoving;
    Strip m_horizontal;
    Strip m_vertical;
};

int startTimer()
{
    constexpr long interval = 16'666'666;  // nanoseconds, 60 Hz
    const int timer = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC);
    const itimerspec times{.it_interval = {0, interval}, .it_value = {0, interval}};
    timerfd_settime(timer, 0, &times, nullptr);
    return timer;
}

}  // namespace

int main(int argc, char** argv)
{
    const auto connection = Connection::open();
    if (!connection) {
        std::fputs("tarnwick_bench_floor: no X server\n", stderr);
        return EXIT_FAILURE;
    }
    Floor floor(*connection, argc > 1 && std::string_view(argv[1]) == "--moving");
    const int timer = startTimer();
    std::uint64_t expirations = 0;
    while (read(timer, &expirations, sizeof expirations) == sizeof expirations && floor.tick()) { }
    std::fputs("tarnwick_bench_floor: the screen cannot be read\n", stderr);
    return EXIT_FAILURE;
}

// A hand that moves the mouse: 125 times a second, as mice report, the pointer goes a step
// further on a circle around the middle of the screen, half as high as the screen, one
// round in two seconds. The pointer's picture is hidden meanwhile, as it is under a
// crosshair, so that drawing it is no part of what is measured.
#include <sys/timerfd.h>
#include <unistd.h>
#include <xcb/xfixes.h>
#include <xcb/xtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <numbers>

#include "Platform/X11/Connection.h"

namespace {

using Platform::X11::Connection;

constexpr long interval = 8'000'000;  // nanoseconds
constexpr int stepsPerRound = 250;

void hideCursor(Connection& connection)
{
    Platform::X11::adopt(xcb_xfixes_query_version_reply(connection, xcb_xfixes_query_version(connection, 4, 0), nullptr));
    xcb_xfixes_hide_cursor(connection, connection.root());
}

void moveToStep(Connection& connection, int step)
{
    const auto& screen = connection.screen();
    const double angle = 2 * std::numbers::pi * step / stepsPerRound;
    const double radius = screen.height_in_pixels / 4.0;
    const auto x = std::lround(screen.width_in_pixels / 2.0 + radius * std::cos(angle));
    const auto y = std::lround(screen.height_in_pixels / 2.0 + radius * std::sin(angle));
    xcb_test_fake_input(
        connection, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, screen.root, static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0);
    connection.flush();
}

}  // namespace

int main()
{
    const auto connection = Connection::open();
    if (!connection) {
        std::fputs("tarnwick_bench_circling_pointer: no X server\n", stderr);
        return EXIT_FAILURE;
    }
    hideCursor(*connection);
    const int timer = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC);
    const itimerspec times{.it_interval = {0, interval}, .it_value = {0, interval}};
    timerfd_settime(timer, 0, &times, nullptr);
    std::uint64_t expirations = 0;
    for (int step = 0; read(timer, &expirations, sizeof expirations) == sizeof expirations && !connection->isBroken(); ++step)
        moveToStep(*connection, step);
    return EXIT_SUCCESS;
}

// The monitors as RandR tells them, and which of them is the main screen.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Platform/Screens.h"
#include "Platform/X11/Connection.h"
#include "Platform/X11/EventPump.h"
#include "Platform/X11/SharedMonitorLayout.h"

namespace Platform::X11 {

class X11Screens final : public Screens {
public:
    // Device pixels per point of the monitor with that name.
    using ScaleOfMonitor = std::function<double(const std::string& name)>;

    // Round trips go over `requests`. `changes` is a connection that nothing else uses:
    // it hears of changed monitors. Both outlive this object.
    X11Screens(Connection& requests, Connection& changes, FileDescriptorWatcher&, MainLoop&, SharedMonitorLayout&, ScaleOfMonitor);

    std::span<const Screen> screens() override { return m_screens; }
    std::optional<Screen> mainScreen() override;
    Token observe(std::function<void()> changed) override;

    // Reads the monitors and their scales again; tells the observers when they differ.
    void readAgain();

private:
    void listen();
    void readAgainSoon();
    const Monitor* mainMonitor() const;

    Connection& m_requests;
    Connection& m_changes;
    MainLoop& m_mainLoop;
    SharedMonitorLayout& m_layout;
    ScaleOfMonitor m_scaleOfMonitor;
    std::vector<Screen> m_screens;
    std::shared_ptr<std::map<int, std::function<void()>>> m_observers;
    int m_lastObserver = 0;
    std::shared_ptr<X11Screens*> m_self;  // empties when this goes
    bool m_willReadAgain = false;
    EventPump m_pump;

public:
    ~X11Screens() override;
};

}  // namespace Platform::X11

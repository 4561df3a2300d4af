// Screens as a test sets them up. It starts with one, "MAIN", 1920 x 1080 at scale 1.
//
// Lines: "screens.mainScreen".
#pragma once

#include <list>
#include <utility>
#include <vector>

#include "Platform/Screens.h"
#include "Support/CallLog.h"

namespace TestSupport {

class FakeScreens : public Platform::Screens {
public:
    explicit FakeScreens(CallLog& log) : m_log(log) { }

    // Tells the observers. The main screen is the one of that index; none by default where
    // the list is empty.
    void set(std::vector<Platform::Screen> screens, std::size_t mainIndex = 0)
    {
        m_screens = std::move(screens);
        m_mainIndex = mainIndex;
        const auto observers = m_observers;
        for (const auto& observer : observers)
            observer();
    }

    int observerCount() const { return static_cast<int>(m_observers.size()); }

    std::span<const Platform::Screen> screens() override { return m_screens; }

    std::optional<Platform::Screen> mainScreen() override
    {
        m_log.add("screens.mainScreen");
        return m_mainIndex < m_screens.size() ? std::optional(m_screens[m_mainIndex]) : std::nullopt;
    }

    Platform::Token observe(std::function<void()> changed) override
    {
        const auto observer = m_observers.insert(m_observers.end(), std::move(changed));
        return Platform::Token([this, observer] { m_observers.erase(observer); });
    }

private:
    CallLog& m_log;
    std::vector<Platform::Screen> m_screens = {{"MAIN", {0, 0, 1920, 1080}, 1}};
    std::size_t m_mainIndex = 0;
    std::list<std::function<void()>> m_observers;
};

}  // namespace TestSupport

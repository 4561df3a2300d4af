// Screens as a test sets them up. It starts with one, "MAIN", 1920 x 1080 at scale 1.
//
// Lines: "screens.mainScreen".
#pragma once

#include <map>
#include <memory>
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
        const auto observers = *m_observers;
        for (const auto& [id, changed] : observers) {
            if (m_observers->count(id) != 0)
                changed();
        }
    }

    int observerCount() const { return static_cast<int>(m_observers->size()); }

    std::span<const Platform::Screen> screens() override { return m_screens; }

    std::optional<Platform::Screen> mainScreen() override
    {
        m_log.add("screens.mainScreen");
        return m_mainIndex < m_screens.size() ? std::optional(m_screens[m_mainIndex]) : std::nullopt;
    }

    Platform::Token observe(std::function<void()> changed) override
    {
        const int id = ++m_lastObserver;
        m_observers->emplace(id, std::move(changed));
        return Platform::Token([observers = std::weak_ptr(m_observers), id] {
            if (const auto living = observers.lock())
                living->erase(id);
        });
    }

private:
    CallLog& m_log;
    std::vector<Platform::Screen> m_screens = {{"MAIN", {0, 0, 1920, 1080}, 1}};
    std::size_t m_mainIndex = 0;
    std::shared_ptr<std::map<int, std::function<void()>>> m_observers = std::make_shared<std::map<int, std::function<void()>>>();
    int m_lastObserver = 0;
};

}  // namespace TestSupport

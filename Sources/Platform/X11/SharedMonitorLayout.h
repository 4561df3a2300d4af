// The present monitor layout, set by the screens on the main thread and read by the
// capture on any thread.
#pragma once

#include <memory>
#include <mutex>

#include "Platform/X11/MonitorLayout.h"

namespace Platform::X11 {

class SharedMonitorLayout {
public:
    SharedMonitorLayout() : m_layout(std::make_shared<const MonitorLayout>()) { }

    void set(MonitorLayout layout)
    {
        auto shared = std::make_shared<const MonitorLayout>(std::move(layout));
        const std::lock_guard lock(m_mutex);
        m_layout = std::move(shared);
    }

    std::shared_ptr<const MonitorLayout> get() const
    {
        const std::lock_guard lock(m_mutex);
        return m_layout;
    }

private:
    mutable std::mutex m_mutex;
    std::shared_ptr<const MonitorLayout> m_layout;
};

}  // namespace Platform::X11

// The pointer and its picture.
//
// Lines: "pointer.location", "cursor.hide", "cursor.show".
#pragma once

#include "Platform/Pointer.h"
#include "Support/CallLog.h"

namespace TestSupport {

class FakePointer : public Platform::Pointer {
public:
    explicit FakePointer(CallLog& log) : m_log(log) { }

    void moveTo(std::optional<Platform::Point> location) { m_location = location; }

    std::optional<Platform::Point> location() override
    {
        m_log.add("pointer.location");
        return m_location;
    }

private:
    CallLog& m_log;
    std::optional<Platform::Point> m_location = Platform::Point();
};

class FakeCursor : public Platform::Cursor {
public:
    explicit FakeCursor(CallLog& log) : m_log(log) { }

    bool isVisible() const { return m_hideCount <= 0; }
    // How many hide() calls no show() has answered; negative where there are too many.
    int hideCount() const { return m_hideCount; }

    void hide() override
    {
        m_log.add("cursor.hide");
        ++m_hideCount;
    }
    void show() override
    {
        m_log.add("cursor.show");
        --m_hideCount;
    }

private:
    CallLog& m_log;
    int m_hideCount = 0;
};

}  // namespace TestSupport

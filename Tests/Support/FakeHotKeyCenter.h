// Hot keys of a test: records every request, obeys scripted refusals and, told which
// keys are pressed, delivers what a system would deliver at that moment. As a system it
// refuses a combination that it holds already, and keys that there are not. References and
// handler tokens may outlive it.
//
// Lines: "hotKeys.register id=1 keyCode=7 modifiers=0x900", "hotKeys.unregister id=1",
// "hotKeys.installHandler", "hotKeys.removeHandler", "hotKeys.addEventTypes hotKey",
// "hotKeys.removeEventTypes rawKey".
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <tuple>
#include <utility>

#include "Platform/HotKeyCenter.h"
#include "Support/CallLog.h"

namespace TestSupport {

class FakeHotKeyCenter : public Platform::HotKeyCenter {
public:
    struct Combination {
        std::uint32_t keyCode = 0;
        std::uint32_t carbonModifiers = 0;

        friend bool operator==(const Combination&, const Combination&) = default;
        friend bool operator<(const Combination& left, const Combination& right)
        {
            return std::tie(left.keyCode, left.carbonModifiers) < std::tie(right.keyCode, right.carbonModifiers);
        }
    };

    explicit FakeHotKeyCenter(CallLog& log);

    // Until allow(), registrations of this combination end with this status.
    void refuse(const Combination&, Platform::HotKeyStatus = Platform::HotKeyStatus::taken);
    void allow(const Combination&);
    // Registrations end with success, but without a reference.
    void withholdReferences(bool isWithheld);

    // What the user does. The answer is the handler's; nothing when no event was due.
    std::optional<std::int32_t> press(const Combination&);
    std::optional<std::int32_t> release(const Combination&);
    // Any event at all, as if its type had been added.
    std::optional<std::int32_t> send(const Platform::KeyboardEvent&);

    // The hot keys that the system holds now, by identifier.
    std::map<std::uint32_t, Combination> registered() const;
    std::uint32_t lastSignature() const;
    bool hasHandler() const;
    bool listensFor(Platform::KeyboardEventTypes) const;

    Platform::HotKeyRegistration registerHotKey(std::uint32_t keyCode, std::uint32_t carbonModifiers, Platform::HotKeyID) override;
    Platform::Token installHandler(std::function<std::int32_t(const Platform::KeyboardEvent&)>) override;
    void addEventTypes(Platform::KeyboardEventTypes) override;
    void removeEventTypes(Platform::KeyboardEventTypes) override;

private:
    struct State;
    struct Reference;

    bool isHeld(const Combination&) const;
    std::optional<std::int32_t> deliver(const Combination&, Platform::KeyboardEvent::Kind hotKeyKind, Platform::KeyboardEvent::Kind rawKind);

    std::shared_ptr<State> m_state;
    std::map<Combination, Platform::HotKeyStatus> m_refusals;
    std::set<Platform::KeyboardEventTypes> m_eventTypes;
    bool m_withholdsReferences = false;
    std::uint32_t m_lastSignature = 0;
};

}  // namespace TestSupport

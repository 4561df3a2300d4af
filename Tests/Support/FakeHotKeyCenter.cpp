#include "Support/FakeHotKeyCenter.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "Platform/KeyCodes.h"

namespace TestSupport {
namespace {

using Platform::HotKeyStatus;
using Platform::KeyboardEvent;
using Platform::KeyboardEventTypes;

std::string hexadecimal(std::uint32_t value)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%x", value);
    return text;
}

bool isSupported(const FakeHotKeyCenter::Combination& combination)
{
    namespace Modifier = Platform::CarbonModifier;
    constexpr auto modifiers = Modifier::command | Modifier::shift | Modifier::option | Modifier::control;
    return Platform::evdevCode(combination.keyCode) && (combination.carbonModifiers & ~modifiers) == 0;
}

std::string nameOf(KeyboardEventTypes types) { return types == KeyboardEventTypes::hotKey ? "hotKey" : "rawKey"; }

}  // namespace

struct FakeHotKeyCenter::State {
    struct Held {
        Platform::HotKeyID hotKeyID;
        Combination combination;
    };

    CallLog& log;
    std::map<std::uint32_t, Held> held;
    std::function<std::int32_t(const KeyboardEvent&)> handler;
};

struct FakeHotKeyCenter::Reference : Platform::HotKeyReference {
    Reference(std::weak_ptr<State> centre, std::uint32_t identifier) : state(std::move(centre)), id(identifier) { }
    Reference(const Reference&) = delete;
    Reference& operator=(const Reference&) = delete;
    ~Reference() override
    {
        if (const auto living = state.lock()) {
            living->log.add("hotKeys.unregister id=" + std::to_string(id));
            living->held.erase(id);
        }
    }

    std::weak_ptr<State> state;
    std::uint32_t id;
};

FakeHotKeyCenter::FakeHotKeyCenter(CallLog& log) : m_state(std::make_shared<State>(State{log, {}, nullptr})) { }

void FakeHotKeyCenter::refuse(const Combination& combination, HotKeyStatus status) { m_refusals[combination] = status; }

void FakeHotKeyCenter::allow(const Combination& combination) { m_refusals.erase(combination); }

void FakeHotKeyCenter::withholdReferences(bool isWithheld) { m_withholdsReferences = isWithheld; }

std::optional<std::int32_t> FakeHotKeyCenter::press(const Combination& combination)
{
    return deliver(combination, KeyboardEvent::Kind::hotKeyPressed, KeyboardEvent::Kind::rawKeyDown);
}

std::optional<std::int32_t> FakeHotKeyCenter::release(const Combination& combination)
{
    return deliver(combination, KeyboardEvent::Kind::hotKeyReleased, KeyboardEvent::Kind::rawKeyUp);
}

std::optional<std::int32_t> FakeHotKeyCenter::deliver(const Combination& combination, KeyboardEvent::Kind hotKeyKind, KeyboardEvent::Kind rawKind)
{
    std::optional<std::int32_t> answer;
    if (listensFor(KeyboardEventTypes::hotKey)) {
        const auto held = m_state->held;
        for (const auto& [id, hotKey] : held) {
            if (hotKey.combination == combination)
                answer = send({hotKeyKind, hotKey.hotKeyID, 0, 0});
        }
    }
    if (!answer && listensFor(KeyboardEventTypes::rawKey))
        answer = send({rawKind, {}, combination.keyCode, combination.carbonModifiers});
    return answer;
}

std::optional<std::int32_t> FakeHotKeyCenter::send(const KeyboardEvent& event)
{
    const auto handler = m_state->handler;
    if (!handler)
        return std::nullopt;
    return handler(event);
}

std::map<std::uint32_t, FakeHotKeyCenter::Combination> FakeHotKeyCenter::registered() const
{
    std::map<std::uint32_t, Combination> result;
    for (const auto& [id, hotKey] : m_state->held)
        result[id] = hotKey.combination;
    return result;
}

std::uint32_t FakeHotKeyCenter::lastSignature() const { return m_lastSignature; }

bool FakeHotKeyCenter::isHeld(const Combination& combination) const
{
    return std::any_of(m_state->held.begin(), m_state->held.end(), [&](const auto& held) { return held.second.combination == combination; });
}

bool FakeHotKeyCenter::hasHandler() const { return m_state->handler != nullptr; }

bool FakeHotKeyCenter::listensFor(KeyboardEventTypes types) const { return m_eventTypes.contains(types); }

Platform::HotKeyRegistration FakeHotKeyCenter::registerHotKey(std::uint32_t keyCode, std::uint32_t carbonModifiers, Platform::HotKeyID hotKeyID)
{
    m_state->log.add(
        "hotKeys.register id=" + std::to_string(hotKeyID.id) + " keyCode=" + std::to_string(keyCode) + " modifiers=" + hexadecimal(carbonModifiers));
    m_lastSignature = hotKeyID.signature;
    const Combination combination{keyCode, carbonModifiers};
    if (const auto refusal = m_refusals.find(combination); refusal != m_refusals.end())
        return {refusal->second, nullptr};
    if (!isSupported(combination))
        return {HotKeyStatus::unsupported, nullptr};
    if (isHeld(combination))
        return {HotKeyStatus::taken, nullptr};
    if (m_withholdsReferences)
        return {HotKeyStatus::granted, nullptr};
    m_state->held[hotKeyID.id] = {hotKeyID, combination};
    return {HotKeyStatus::granted, std::make_unique<Reference>(m_state, hotKeyID.id)};
}

Platform::Token FakeHotKeyCenter::installHandler(std::function<std::int32_t(const KeyboardEvent&)> handler)
{
    if (hasHandler())
        throw std::logic_error("a second keyboard event handler was installed");
    m_state->log.add("hotKeys.installHandler");
    m_state->handler = std::move(handler);
    return Platform::Token([state = std::weak_ptr(m_state)] {
        if (const auto living = state.lock()) {
            living->log.add("hotKeys.removeHandler");
            living->handler = nullptr;
        }
    });
}

void FakeHotKeyCenter::addEventTypes(KeyboardEventTypes types)
{
    m_state->log.add("hotKeys.addEventTypes " + nameOf(types));
    m_eventTypes.insert(types);
}

void FakeHotKeyCenter::removeEventTypes(KeyboardEventTypes types)
{
    m_state->log.add("hotKeys.removeEventTypes " + nameOf(types));
    m_eventTypes.erase(types);
}

}  // namespace TestSupport

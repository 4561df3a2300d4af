// A typed binding to one key of the user defaults: Bool, integer, floating point, text,
// or an enumeration that is stored as its raw text. Nothing is cached, and a read never
// writes the default. Main thread only.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/UserDefaults.h"

namespace Tarnwick {

// How a type is stored. An enumeration specialises it.
template <typename Value> struct SettingStorage;

template <> struct SettingStorage<bool> {
    static std::optional<bool> read(Platform::UserDefaults& defaults, std::string_view key) { return defaults.boolValue(key); }
    static Platform::DefaultsValue stored(bool value) { return value; }
};

template <> struct SettingStorage<std::int64_t> {
    static std::optional<std::int64_t> read(Platform::UserDefaults& defaults, std::string_view key) { return defaults.integerValue(key); }
    static Platform::DefaultsValue stored(std::int64_t value) { return value; }
};

template <> struct SettingStorage<double> {
    static std::optional<double> read(Platform::UserDefaults& defaults, std::string_view key) { return defaults.doubleValue(key); }
    static Platform::DefaultsValue stored(double value) { return value; }
};

template <> struct SettingStorage<std::string> {
    static std::optional<std::string> read(Platform::UserDefaults& defaults, std::string_view key) { return defaults.stringValue(key); }
    static Platform::DefaultsValue stored(const std::string& value) { return value; }
};

template <typename Value> class PersistentSetting {
public:
    PersistentSetting(Platform::UserDefaults& defaults, std::string key, Value defaultValue)
        : m_defaults(defaults), m_key(std::move(key)), m_defaultValue(std::move(defaultValue))
    {
    }

    // The default where the key is absent or holds nothing of this type.
    Value get() const { return SettingStorage<Value>::read(m_defaults, m_key).value_or(m_defaultValue); }
    void set(const Value& value) { m_defaults.setObject(m_key, SettingStorage<Value>::stored(value)); }

private:
    Platform::UserDefaults& m_defaults;
    const std::string m_key;
    const Value m_defaultValue;
};

}  // namespace Tarnwick

// A per-user store of typed values under text keys. Main thread only. Read afresh at
// every call: a value written by another process is seen by the next read.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace Platform {

// An absent key, false and a text are three different things.
using DefaultsValue = std::variant<bool, std::int64_t, double, std::string>;

class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    virtual std::optional<DefaultsValue> object(std::string_view key) = 0;

    // A value that cannot be stored (read-only, disk full) is lost for this write only;
    // the implementation says so on standard error and the program goes on.
    virtual void setObject(std::string_view key, const DefaultsValue&) = 0;
    virtual void removeObject(std::string_view key) = 0;

    virtual std::map<std::string, DefaultsValue> dictionaryRepresentation() = 0;

    // Conversions of a stored value; nothing when absent or not convertible. A number is
    // true unless zero; a text counts as Bool when it says so ("true", "YES", "1", ...) and
    // as number when all of it is one; only a text is a string.
    std::optional<bool> boolValue(std::string_view key);
    std::optional<std::int64_t> integerValue(std::string_view key);
    std::optional<double> doubleValue(std::string_view key);
    std::optional<std::string> stringValue(std::string_view key);
};

}  // namespace Platform

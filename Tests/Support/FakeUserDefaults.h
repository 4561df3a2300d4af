// A store in memory. Lines: "userDefaults.object KEY", "userDefaults.setObject KEY=VALUE"
// (a text in quotes, a Bool as true or false), "userDefaults.removeObject KEY",
// "userDefaults.dictionaryRepresentation".
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/UserDefaults.h"
#include "Support/CallLog.h"

namespace TestSupport {

class FakeUserDefaults : public Platform::UserDefaults {
public:
    explicit FakeUserDefaults(CallLog& log) : m_log(log) { }

    // What another program or an earlier run left there: no line is recorded.
    std::map<std::string, Platform::DefaultsValue>& values() { return m_values; }

    // Writes and removals are recorded and then lost, as on a full disk.
    void loseWrites(bool isLosing) { m_losesWrites = isLosing; }

    std::optional<Platform::DefaultsValue> object(std::string_view key) override;
    void setObject(std::string_view key, const Platform::DefaultsValue&) override;
    void removeObject(std::string_view key) override;
    std::map<std::string, Platform::DefaultsValue> dictionaryRepresentation() override;

private:
    CallLog& m_log;
    std::map<std::string, Platform::DefaultsValue> m_values;
    bool m_losesWrites = false;
};

}  // namespace TestSupport

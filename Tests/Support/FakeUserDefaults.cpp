#include "Support/FakeUserDefaults.h"

#include <sstream>
#include <variant>

namespace TestSupport {
namespace {

std::string rendering(const Platform::DefaultsValue& value)
{
    std::ostringstream text;
    text << std::boolalpha;
    if (const auto* string = std::get_if<std::string>(&value))
        text << '"' << *string << '"';
    else
        std::visit([&](const auto& plain) { text << plain; }, value);
    return text.str();
}

}  // namespace

std::optional<Platform::DefaultsValue> FakeUserDefaults::object(std::string_view key)
{
    if (m_log.isRecording())
        m_log.add("userDefaults.object " + std::string(key));
    const auto value = m_values.find(std::string(key));
    return value != m_values.end() ? std::optional(value->second) : std::nullopt;
}

void FakeUserDefaults::setObject(std::string_view key, const Platform::DefaultsValue& value)
{
    m_log.add("userDefaults.setObject " + std::string(key) + "=" + rendering(value));
    if (!m_losesWrites)
        m_values.insert_or_assign(std::string(key), value);
}

void FakeUserDefaults::removeObject(std::string_view key)
{
    m_log.add("userDefaults.removeObject " + std::string(key));
    if (!m_losesWrites)
        m_values.erase(std::string(key));
}

std::map<std::string, Platform::DefaultsValue> FakeUserDefaults::dictionaryRepresentation()
{
    m_log.add("userDefaults.dictionaryRepresentation");
    return m_values;
}

}  // namespace TestSupport

#include "Platform/Freedesktop/SettingsDocument.h"

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

namespace Platform::Freedesktop {
namespace {

constexpr int maximumDepth = 64;

std::optional<DefaultsValue> valueOf(const nlohmann::json& json)
{
    if (json.is_boolean())
        return json.get<bool>();
    if (json.is_number_unsigned() && json.get<std::uint64_t>() > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
        return json.get<double>();
    if (json.is_number_integer())
        return json.get<std::int64_t>();
    if (json.is_number_float())
        return json.get<double>();
    if (json.is_string())
        return json.get<std::string>();
    return std::nullopt;
}

}  // namespace

std::optional<nlohmann::json> parseDocument(std::string_view text)
{
    // Writing a document recurses: a deep one must not end the program.
    bool isTooDeep = false;
    const auto watchDepth = [&](int depth, nlohmann::json::parse_event_t, nlohmann::json&) {
        isTooDeep = isTooDeep || depth > maximumDepth;
        return !isTooDeep;
    };
    auto document = nlohmann::json::parse(text, watchDepth, false);
    if (isTooDeep || !document.is_object())
        return std::nullopt;
    return document;
}

DefaultsValues valuesOf(const nlohmann::json& document)
{
    DefaultsValues values;
    for (const auto& [key, json] : document.items()) {
        if (auto value = valueOf(json))
            values.emplace(key, *std::move(value));
    }
    return values;
}

std::optional<nlohmann::json> jsonOf(const DefaultsValue& value)
{
    if (const auto* number = std::get_if<double>(&value); number != nullptr && !std::isfinite(*number))
        return std::nullopt;
    if (const auto* text = std::get_if<std::string>(&value); text != nullptr && !isUtf8(*text))
        return std::nullopt;
    return std::visit([](const auto& alternative) { return nlohmann::json(alternative); }, value);
}

bool isUtf8(std::string_view text)
{
    try {
        static_cast<void>(nlohmann::json(text).dump());
        return true;
    } catch (const nlohmann::json::type_error&) {
        return false;
    }
}

std::string textOf(const nlohmann::json& document)
{
    constexpr int indentation = 4;
    return document.dump(indentation) + '\n';
}

}  // namespace Platform::Freedesktop

// The text of a settings file: one JSON object, a member per key. A value is kept in
// the JSON kind of its type, so that true, 1, 1.0 and "1" stay four different values.
#pragma once

#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/UserDefaults.h"

namespace Platform::Freedesktop {

using DefaultsValues = std::map<std::string, DefaultsValue, std::less<>>;

// Nothing when the text is not a JSON object, nests deeper than 64 levels or holds a
// number beyond a double's range.
std::optional<nlohmann::json> parseDocument(std::string_view text);

// The members that are values. null, arrays and objects (written by somebody else) read
// as absent and stay in the document; an integer beyond 64 bits reads as the nearest
// double.
DefaultsValues valuesOf(const nlohmann::json& document);

// Nothing when JSON cannot hold the value: a number that is not finite, or a text that
// is not UTF-8.
std::optional<nlohmann::json> jsonOf(const DefaultsValue&);

bool isUtf8(std::string_view);

// Indented, keys in order, a line feed at the end.
std::string textOf(const nlohmann::json& document);

}  // namespace Platform::Freedesktop

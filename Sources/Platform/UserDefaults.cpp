#include "Platform/UserDefaults.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

namespace Platform {
namespace {

template <typename Number> std::optional<Number> parsed(std::string_view text)
{
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

bool equalIgnoringCase(std::string_view text, std::string_view lowerCase)
{
    const auto lower = [](char character) { return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character; };
    return std::equal(text.begin(), text.end(), lowerCase.begin(), lowerCase.end(), [&](char left, char right) { return lower(left) == right; });
}

// Towards zero; nothing for what 64 bits cannot hold.
std::optional<std::int64_t> integer(double number)
{
    constexpr double limit = 0x1p63;
    if (!(number >= -limit && number < limit))
        return std::nullopt;
    return static_cast<std::int64_t>(number);
}

std::optional<double> number(std::string_view text)
{
    const auto value = parsed<double>(text);
    return value && std::isfinite(*value) ? value : std::nullopt;
}

struct BoolConversion {
    std::optional<bool> operator()(bool value) const { return value; }
    std::optional<bool> operator()(std::int64_t value) const { return value != 0; }
    std::optional<bool> operator()(double value) const { return value != 0; }
    std::optional<bool> operator()(const std::string& text) const
    {
        const auto isText = [&](std::string_view word) { return equalIgnoringCase(text, word); };
        constexpr std::array<std::string_view, 4> yes = {"true", "yes", "y", "t"};
        constexpr std::array<std::string_view, 4> no = {"false", "no", "n", "f"};
        if (std::any_of(yes.begin(), yes.end(), isText))
            return true;
        if (std::any_of(no.begin(), no.end(), isText))
            return false;
        const auto value = number(text);
        return value ? std::optional(*value != 0) : std::nullopt;
    }
};

struct IntegerConversion {
    std::optional<std::int64_t> operator()(bool value) const { return value ? 1 : 0; }
    std::optional<std::int64_t> operator()(std::int64_t value) const { return value; }
    std::optional<std::int64_t> operator()(double value) const { return integer(value); }
    std::optional<std::int64_t> operator()(const std::string& text) const
    {
        if (const auto value = parsed<std::int64_t>(text))
            return value;
        const auto value = number(text);
        return value ? integer(*value) : std::nullopt;
    }
};

struct DoubleConversion {
    std::optional<double> operator()(bool value) const { return value ? 1 : 0; }
    std::optional<double> operator()(std::int64_t value) const { return static_cast<double>(value); }
    std::optional<double> operator()(double value) const { return value; }
    std::optional<double> operator()(const std::string& text) const { return number(text); }
};

}  // namespace

std::optional<bool> UserDefaults::boolValue(std::string_view key)
{
    const auto value = object(key);
    return value ? std::visit(BoolConversion(), *value) : std::nullopt;
}

std::optional<std::int64_t> UserDefaults::integerValue(std::string_view key)
{
    const auto value = object(key);
    return value ? std::visit(IntegerConversion(), *value) : std::nullopt;
}

std::optional<double> UserDefaults::doubleValue(std::string_view key)
{
    const auto value = object(key);
    return value ? std::visit(DoubleConversion(), *value) : std::nullopt;
}

std::optional<std::string> UserDefaults::stringValue(std::string_view key)
{
    const auto value = object(key);
    const auto* const text = value ? std::get_if<std::string>(&*value) : nullptr;
    return text != nullptr ? std::optional(*text) : std::nullopt;
}

}  // namespace Platform

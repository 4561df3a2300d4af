#include "Platform/Freedesktop/JsonUserDefaults.h"

#include <cstdio>
#include <nlohmann/json.hpp>

#include "Platform/Freedesktop/ConfigurationFolder.h"
#include "Platform/Freedesktop/CorruptCopy.h"

namespace Platform::Freedesktop {
namespace {

void complain(const std::string& line) { std::fprintf(stderr, "tarnwick: settings: %s\n", line.c_str()); }

void complainLost(std::string_view key, const std::string& reason) { complain("cannot store \"" + std::string(key) + "\": " + reason); }

std::filesystem::path withSuffix(std::filesystem::path path, const char* suffix) { return path += suffix; }

bool isAbsent(const FileContents& contents) { return contents.error == std::errc::no_such_file_or_directory; }

std::string lockTrouble(const std::error_code& error) { return error == std::errc::timed_out ? "another process holds the lock" : error.message(); }

// An absent file is an empty document.
std::optional<nlohmann::json> documentOf(const FileContents& contents)
{
    return isAbsent(contents) ? nlohmann::json::object() : parseDocument(contents.text);
}

}  // namespace

JsonUserDefaults::JsonUserDefaults(std::filesystem::path file, std::chrono::milliseconds lockWait) : m_file(std::move(file)), m_lockWait(lockWait) { }

std::filesystem::path JsonUserDefaults::standardFile() { return configurationFolder() / "tarnwick" / "defaults.json"; }

std::optional<DefaultsValue> JsonUserDefaults::object(std::string_view key)
{
    const auto& current = values();
    const auto found = current.find(key);
    return found != current.end() ? std::optional(found->second) : std::nullopt;
}

void JsonUserDefaults::setObject(std::string_view key, const DefaultsValue& value)
{
    auto json = jsonOf(value);
    if (!json || !isUtf8(key))
        return complainLost(key, "JSON has no such value");
    const auto reason = store([&](nlohmann::json& document) { document[std::string(key)] = *std::move(json); });
    if (!reason.empty())
        complainLost(key, reason);
}

void JsonUserDefaults::removeObject(std::string_view key)
{
    const auto document = documentOf(readFile(m_file));
    if (document && !document->contains(key))
        return;
    const auto reason = store([&](nlohmann::json& current) { current.erase(std::string(key)); });
    if (!reason.empty())
        complain("cannot remove \"" + std::string(key) + "\": " + reason);
}

std::map<std::string, DefaultsValue> JsonUserDefaults::dictionaryRepresentation()
{
    const auto& current = values();
    return {current.begin(), current.end()};
}

const DefaultsValues& JsonUserDefaults::values()
{
    if (mustReadAgain())
        readAgain();
    return m_values;
}

bool JsonUserDefaults::mustReadAgain()
{
    if (m_signature != signatureOf(m_file))
        return true;
    if (!m_unsettled)
        return false;
    // Before the comparison: a change after it will have another signature then.
    const bool isSettledNow = isSettled(*m_signature);
    if (!isUnchanged(*m_unsettled))
        return true;
    if (isSettledNow)
        m_unsettled.reset();
    return false;
}

void JsonUserDefaults::readAgain()
{
    auto contents = readFile(m_file);
    auto document = documentOf(contents);
    const bool isUnreadable = contents.error && !isAbsent(contents);
    if (!document && !isUnreadable)
        document = readCorruptFile(contents);
    m_values = valuesOf(document.value_or(nlohmann::json::object()));
    m_signature.reset();
    m_unsettled.reset();
    if (!contents.error || isAbsent(contents))
        m_signature = contents.signature;
    if (isUnreadable)
        complainOnce("cannot read " + m_file.string() + ": " + contents.error.message() + "; the defaults apply");
    if (document)
        m_lastComplaint.clear();
    if (!contents.error && !isSettled(contents.signature))
        m_unsettled = std::move(contents);
}

// Under the lock, so that two processes do not both keep a copy; one of them may have
// written a good file meanwhile.
std::optional<nlohmann::json> JsonUserDefaults::readCorruptFile(FileContents& contents)
{
    std::error_code error;
    std::optional<std::filesystem::path> copy;
    if (const auto held = lock(error)) {
        contents = readFile(m_file);
        if (auto document = documentOf(contents))
            return document;
        if (!contents.error)
            copy = keepCorruptCopy(targetOf(m_file), contents.text);
    }
    complainOfCorruption(copy);
    return std::nullopt;
}

void JsonUserDefaults::complainOfCorruption(const std::optional<std::filesystem::path>& copy)
{
    const auto kept = copy ? "a copy is kept in " + copy->string() : std::string("no copy could be kept");
    complainOnce(m_file.string() + " is not readable as JSON; the defaults apply; " + kept);
}

void JsonUserDefaults::complainOnce(const std::string& line)
{
    if (m_lastComplaint != line)
        complain(line);
    m_lastComplaint = line;
}

std::string JsonUserDefaults::store(const std::function<void(nlohmann::json&)>& change)
{
    const auto target = targetOf(m_file);
    if (const auto error = makeFolders(target.parent_path()))
        return "cannot make " + target.parent_path().string() + ": " + error.message();
    std::error_code lockError;
    const auto held = lock(lockError);
    if (!held)
        return "cannot lock " + target.string() + ": " + lockTrouble(lockError);
    const auto contents = readFile(target);
    if (contents.error && !isAbsent(contents))
        return "cannot read " + target.string() + ": " + contents.error.message();
    auto document = documentOf(contents);
    if (!document) {
        const auto copy = keepCorruptCopy(target, contents.text);
        if (!copy)
            return target.string() + " is not readable as JSON and no copy of it could be kept";
        complainOfCorruption(copy);
    }
    auto changed = document.value_or(nlohmann::json::object());
    change(changed);
    const auto text = textOf(changed);
    m_signature.reset();
    m_unsettled.reset();
    const auto error = text == contents.text ? std::error_code() : replaceFile(target, text);
    return error ? "cannot write " + target.string() + ": " + error.message() : std::string();
}

std::optional<FileLock> JsonUserDefaults::lock(std::error_code& error)
{
    const auto wait = m_isLockStuck ? std::chrono::milliseconds(0) : m_lockWait;
    auto held = FileLock::acquire(withSuffix(targetOf(m_file), ".lock"), wait, error);
    m_isLockStuck = error == std::errc::timed_out;
    return held;
}

}  // namespace Platform::Freedesktop

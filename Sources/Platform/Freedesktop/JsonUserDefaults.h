// The user's settings: one JSON file, shared with every other process that writes it by
// the same rules. Main thread only; no thread, timer or file watch of its own.
//
// Reading costs one stat(); the file is parsed again only when that tells of a change. Of
// a file that changed a moment ago stat() may not tell the next change: its text is
// compared, too. Neither allocates memory.
// Writing reads the file afresh, changes the one key and replaces the file as a whole,
// all under a lock beside it ("defaults.json.lock"), so that processes writing at once
// lose nothing and a process killed at any moment leaves a readable file. The path may
// be a symbolic link; what it points to is replaced.
//
// Trouble never stops the program; each of these is one line on standard error:
//   not a JSON object      reads as empty; a copy stays beside it ("defaults.json.corrupt-"
//                          and a number made from its contents), and the next write makes
//                          a good file. Without room for the copy nothing is written.
//   unreadable             reads as empty, and is not overwritten
//   value cannot be stored (read-only, disk full, folder gone, lock held by a stuck
//                          process, a number that is not finite, a text that is not UTF-8)
//                          lost for this write only
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <nlohmann/json_fwd.hpp>

#include "Platform/Freedesktop/FileLock.h"
#include "Platform/Freedesktop/Files.h"
#include "Platform/Freedesktop/SettingsDocument.h"
#include "Platform/UserDefaults.h"

namespace Platform::Freedesktop {

class JsonUserDefaults : public UserDefaults {
public:
    // A write waits at most `lockWait` for the lock; after one that waited in vain,
    // further writes do not wait until one gets it.
    explicit JsonUserDefaults(std::filesystem::path file = standardFile(), std::chrono::milliseconds lockWait = std::chrono::seconds(1));

    // "tarnwick/defaults.json" in the configuration folder.
    static std::filesystem::path standardFile();

    std::optional<DefaultsValue> object(std::string_view key) override;
    void setObject(std::string_view key, const DefaultsValue&) override;
    void removeObject(std::string_view key) override;
    std::map<std::string, DefaultsValue> dictionaryRepresentation() override;

private:
    const DefaultsValues& values();
    bool mustReadAgain();
    void readAgain();
    std::optional<nlohmann::json> readCorruptFile(FileContents&);
    void complainOfCorruption(const std::optional<std::filesystem::path>& copy);
    void complainOnce(const std::string& line);

    // Why the change could not be stored; empty when it was.
    std::string store(const std::function<void(nlohmann::json&)>& change);
    std::optional<FileLock> lock(std::error_code&);

    std::filesystem::path m_file;
    std::chrono::milliseconds m_lockWait;
    bool m_isLockStuck = false;
    DefaultsValues m_values;
    std::optional<FileSignature> m_signature;  // none: to be read again
    std::optional<FileContents> m_unsettled;   // what was read, while the signature does not tell all
    std::string m_lastComplaint;               // about reading
};

}  // namespace Platform::Freedesktop

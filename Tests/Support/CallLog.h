// The one record of what the code under test asked of the fake system, in order, as
// plain lines ("cursor.hide", "pointer.location"): what a test compares.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace TestSupport {

class CallLog {
public:
    void add(std::string_view line)
    {
        if (m_isRecording)
            m_lines.emplace_back(line);
    }

    // A test that counts allocations switches recording off.
    bool isRecording() const { return m_isRecording; }
    void setRecording(bool isRecording) { m_isRecording = isRecording; }

    const std::vector<std::string>& lines() const { return m_lines; }
    long count(std::string_view line) const { return std::count(m_lines.begin(), m_lines.end(), line); }

    // The lines that start with one of the prefixes, and an end to what was recorded.
    std::vector<std::string> takeLinesOf(const std::vector<std::string>& prefixes)
    {
        std::vector<std::string> taken;
        for (auto& line : m_lines) {
            const auto isWanted = [&](const std::string& prefix) { return line.starts_with(prefix); };
            if (std::any_of(prefixes.begin(), prefixes.end(), isWanted))
                taken.push_back(std::move(line));
        }
        m_lines.clear();
        return taken;
    }

    void clear() { m_lines.clear(); }

private:
    std::vector<std::string> m_lines;
    bool m_isRecording = true;
};

}  // namespace TestSupport

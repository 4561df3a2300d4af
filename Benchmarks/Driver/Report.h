// The figures as text that reads well both on a terminal and as Markdown.
#pragma once

#include <string>
#include <vector>

namespace Benchmarks {

class Report {
public:
    using Row = std::vector<std::string>;

    void heading(const std::string& text);
    void paragraph(const std::string& text);
    void list(const std::vector<std::string>& items);
    // The first row names the columns. Every row has as many cells as the first.
    void table(const std::vector<Row>& rows);

    const std::string& text() const { return m_text; }

private:
    std::string m_text;
};

// With that many digits after the point.
std::string format(double value, int digits);
// "met (at most 2.5)" or "missed (at most 2.5)".
std::string againstTarget(double value, double target, int digits);

}  // namespace Benchmarks

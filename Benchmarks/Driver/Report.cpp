#include "Report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace Benchmarks {
namespace {

std::string line(const Report::Row& cells, const std::vector<std::size_t>& widths)
{
    std::string text = "|";
    for (std::size_t i = 0; i < cells.size(); ++i)
        text += " " + cells[i] + std::string(widths[i] - cells[i].size(), ' ') + " |";
    return text + "\n";
}

}  // namespace

void Report::heading(const std::string& text) { m_text += "### " + text + "\n\n"; }

void Report::paragraph(const std::string& text) { m_text += text + "\n\n"; }

void Report::list(const std::vector<std::string>& items)
{
    for (const auto& item : items)
        m_text += "- " + item + "\n";
    m_text += "\n";
}

void Report::table(const std::vector<Row>& rows)
{
    std::vector<std::size_t> widths(rows.front().size(), 3);
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    }
    m_text += line(rows.front(), widths);
    Row rule;
    for (const auto width : widths)
        rule.push_back(std::string(width, '-'));
    m_text += line(rule, widths);
    for (std::size_t i = 1; i < rows.size(); ++i)
        m_text += line(rows[i], widths);
    m_text += "\n";
}

std::string format(double value, int digits)
{
    if (!std::isfinite(value))
        throw std::runtime_error("a figure is not finite");
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

std::string againstTarget(double value, double target, int digits)
{
    return std::string(value <= target ? "met" : "missed") + " (at most " + format(target, digits) + ")";
}

}  // namespace Benchmarks

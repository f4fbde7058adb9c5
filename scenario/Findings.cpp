#include "scenario/Findings.h"

#include "scenario/Errors.h"

#include <algorithm>
#include <fmt/format.h>

namespace kinora::scenario {

std::string Findings::Line(const std::string& pointer, const std::string& text) const {
    const JsonLocation location = m_locations.Of(pointer);
    const std::string place = location.origin.empty() ? fmt::format("{}:{}", m_fileName, location.line)
                                                      : fmt::format("{}, {}", m_fileName, location.origin);
    return fmt::format("{}: {}: {}", place, pointer.empty() ? "/" : pointer, text);
}

void Findings::Add(const std::string& pointer, const std::string& text) {
    m_findings.push_back({m_locations.Of(pointer).order, Line(pointer, text)});
}

void Findings::ThrowIfAny() const {
    if (m_findings.empty()) {
        return;
    }
    std::vector<Finding> sorted = m_findings;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Finding& a, const Finding& b) { return a.order < b.order; });
    std::string text;
    for (const Finding& finding : sorted) {
        text += (text.empty() ? "" : "\n") + finding.line;
    }
    throw InputError(text);
}

} // namespace kinora::scenario

#include "report/core/LogHeader.h"

#include <algorithm>

namespace kinora::report {
namespace {

constexpr std::array<std::string_view, bodyColumnCount> prefixes = {
    "", "", "", "", "", "", "Force_", "Force_", "Force_", "Torque_", "Torque_", "Torque_"};
constexpr std::array<std::string_view, bodyColumnCount> suffixes = {"_X", "_Y", "_Z", "_Phi", "_Theta", "_Psi",
                                                                    "_X", "_Y", "_Z", "_X",   "_Y",     "_Z"};

bool StartsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

bool EndsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

/// All labels of a body, as they stand in the header.
std::string LabelsOf(std::string_view body) {
    std::string labels;
    for (int column = 0; column < bodyColumnCount; ++column) {
        labels += (column == 0 ? "" : ",") + ColumnLabel(body, static_cast<BodyColumn>(column));
    }
    return labels;
}

/// Reads a header from left to right.
class HeaderReader {
public:
    explicit HeaderReader(std::string_view line) : m_rest(line) {}

    LogHeader Read() {
        for (bool isMore = true; isMore;) {
            if (!TakeBody()) {
                TakeLabel(m_rest.substr(0, m_rest.find(',')));
            }
            isMore = !m_rest.empty();
            if (isMore) {
                m_rest.remove_prefix(1); // the comma
            }
        }
        return std::move(m_header);
    }

private:
    /// Takes the twelve labels of a body, when they come next.
    bool TakeBody() {
        constexpr std::string_view end = "_X,";
        for (std::size_t at = m_rest.find(end); at != std::string_view::npos; at = m_rest.find(end, at + 1)) {
            const std::string_view name = m_rest.substr(0, at);
            const std::string labels = LabelsOf(name);
            const bool isBody =
                StartsWith(m_rest, labels) && (m_rest.size() == labels.size() || m_rest[labels.size()] == ',');
            if (!isBody) {
                continue;
            }
            const std::size_t body = m_header.bodies.size();
            m_header.bodies.emplace_back(name);
            for (int column = 0; column < bodyColumnCount; ++column) {
                m_header.targets.push_back({ColumnTarget::Kind::Body, body, static_cast<BodyColumn>(column)});
            }
            m_rest.remove_prefix(labels.size());
            return true;
        }
        return false;
    }

    void TakeLabel(std::string_view label) {
        m_rest.remove_prefix(label.size());
        ColumnTarget target;
        if (label == "Step") {
            target.kind = ColumnTarget::Kind::Step;
        } else if (label == "SimTime") {
            target.kind = ColumnTarget::Kind::Time;
        } else if (!FindColumn(label, target)) {
            m_header.unknown.emplace_back(label);
        }
        m_header.targets.push_back(target);
    }

    /// A label of a body whose labels are not complete. Loads first: "Force_a_X" is more likely the force on "a" than
    /// the position of "Force_a".
    bool FindColumn(std::string_view label, ColumnTarget& target) {
        for (int column = bodyColumnCount - 1; column >= 0; --column) {
            const auto i = static_cast<std::size_t>(column);
            const std::size_t frame = prefixes[i].size() + suffixes[i].size();
            if (!StartsWith(label, prefixes[i]) || !EndsWith(label, suffixes[i]) || label.size() <= frame) {
                continue;
            }
            target = {ColumnTarget::Kind::Body, BodyIndex(label.substr(prefixes[i].size(), label.size() - frame)),
                      static_cast<BodyColumn>(column)};
            return true;
        }
        return false;
    }

    std::size_t BodyIndex(std::string_view name) {
        const auto found = std::find(m_header.bodies.begin(), m_header.bodies.end(), name);
        if (found != m_header.bodies.end()) {
            return static_cast<std::size_t>(found - m_header.bodies.begin());
        }
        m_header.bodies.emplace_back(name);
        return m_header.bodies.size() - 1;
    }

    std::string_view m_rest;
    LogHeader m_header;
};

} // namespace

std::string ColumnLabel(std::string_view body, BodyColumn column) {
    const auto i = static_cast<std::size_t>(column);
    return std::string(prefixes[i]).append(body).append(suffixes[i]);
}

LogHeader ParseLogHeader(std::string_view line) {
    return HeaderReader(line).Read();
}

} // namespace kinora::report

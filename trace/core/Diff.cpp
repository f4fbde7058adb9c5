#include "trace/core/Diff.h"

#include "trace/core/Show.h"
#include "trace/core/ValueDiff.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace kinora::trace {
namespace {

using Calls = std::vector<const Record*>;

/// Beyond so many insertions and deletions the sessions are compared position by position.
constexpr std::ptrdiff_t mostEdits = 2000;

Calls ComparedCalls(const Session& session) {
    Calls calls;
    for (const Record& record : session.records) {
        if (record.kind != Record::Kind::Lookup || record.HasFailed() || record.isOpen) {
            calls.push_back(&record);
        }
    }
    return calls;
}

/// True for calls of the same method of the same object.
bool IsSameMember(const Record& one, const Record& other) {
    return one.kind == other.kind && one.object == other.object && one.method == other.method;
}

/// Which calls of two sessions belong together: an edit script of least length (the greedy algorithm of Myers).
class Alignment {
public:
    Alignment(const Calls& first, const Calls& second)
        : m_first(first), m_second(second), m_n(Size(first)), m_m(Size(second)) {}

    /// Pairs of indices in order; those left out are in one session only.
    std::vector<std::pair<std::ptrdiff_t, std::ptrdiff_t>> Pairs() {
        const std::ptrdiff_t edits = FindEdits();
        return edits < 0 ? ByPosition() : Backtrack(edits);
    }

private:
    using Frontier = std::vector<std::ptrdiff_t>;

    static std::ptrdiff_t Size(const Calls& calls) { return static_cast<std::ptrdiff_t>(calls.size()); }

    static std::ptrdiff_t& At(Frontier& frontier, std::ptrdiff_t diagonal, std::ptrdiff_t edits) {
        return frontier[static_cast<std::size_t>(diagonal + edits + 1)];
    }

    bool Match(std::ptrdiff_t x, std::ptrdiff_t y) const {
        return IsSameMember(*m_first[static_cast<std::size_t>(x)], *m_second[static_cast<std::size_t>(y)]);
    }

    /// Where the path comes from that reaches this diagonal with one more edit: true for the diagonal above (an
    /// insertion), false for the one below.
    static bool IsInsertion(Frontier& before, std::ptrdiff_t diagonal, std::ptrdiff_t edits) {
        return diagonal == -edits ||
               (diagonal != edits && At(before, diagonal - 1, edits) < At(before, diagonal + 1, edits));
    }

    /// Keeps the furthest points reached by each number of edits. -1 when there are too many edits.
    std::ptrdiff_t FindEdits() {
        Frontier furthest(3, 0);
        for (std::ptrdiff_t edits = 0; edits <= std::min(m_n + m_m, mostEdits); ++edits) {
            m_history.push_back(furthest);
            Frontier next(static_cast<std::size_t>(2 * edits + 5), 0);
            for (std::ptrdiff_t k = -edits; k <= edits; k += 2) {
                std::ptrdiff_t x =
                    IsInsertion(furthest, k, edits) ? At(furthest, k + 1, edits) : At(furthest, k - 1, edits) + 1;
                while (x < m_n && x - k < m_m && Match(x, x - k)) {
                    ++x;
                }
                At(next, k, edits + 1) = x;
                if (x >= m_n && x - k >= m_m) {
                    return edits;
                }
            }
            furthest = std::move(next);
        }
        return -1;
    }

    std::vector<std::pair<std::ptrdiff_t, std::ptrdiff_t>> Backtrack(std::ptrdiff_t edits) {
        std::vector<std::pair<std::ptrdiff_t, std::ptrdiff_t>> pairs;
        std::ptrdiff_t x = m_n;
        std::ptrdiff_t y = m_m;
        for (; edits >= 0; --edits) {
            Frontier& before = m_history[static_cast<std::size_t>(edits)];
            const std::ptrdiff_t k = x - y;
            const std::ptrdiff_t from = IsInsertion(before, k, edits) ? k + 1 : k - 1;
            const std::ptrdiff_t startX = edits == 0 ? 0 : At(before, from, edits);
            const std::ptrdiff_t startY = edits == 0 ? 0 : startX - from;
            while (x > startX && y > startY) {
                pairs.emplace_back(--x, --y);
            }
            x = startX;
            y = startY;
        }
        std::reverse(pairs.begin(), pairs.end());
        return pairs;
    }

    std::vector<std::pair<std::ptrdiff_t, std::ptrdiff_t>> ByPosition() const {
        std::vector<std::pair<std::ptrdiff_t, std::ptrdiff_t>> pairs;
        for (std::ptrdiff_t i = 0; i < std::min(m_n, m_m); ++i) {
            if (Match(i, i)) {
                pairs.emplace_back(i, i);
            }
        }
        return pairs;
    }

    const Calls& m_first;
    const Calls& m_second;
    const std::ptrdiff_t m_n;
    const std::ptrdiff_t m_m;
    std::vector<Frontier> m_history;
};

/// With the object in front, where there is one.
std::string Located(const Record& record, const std::string& text) {
    return record.object.empty() ? text : record.object + "." + text;
}

class Comparison {
public:
    Comparison(bool isFull, std::ostream& out) : m_isFull(isFull), m_out(out) {}

    void OnlyIn(char mark, const Record& record) {
        ++m_differences;
        m_out << fmt::format("{} {} {}{}\n", mark, record.sequence, Located(record, CallText(record, m_isFull)),
                             OutcomeText(record, m_isFull));
    }

    void Compare(const Record& one, const Record& other) {
        m_lines.clear();
        CompareArguments(one, other);
        if (one.flags != other.flags || one.named != other.named) {
            TellBoth(WayOfCalling(one), WayOfCalling(other));
        }
        CompareOutcomes(one, other);
        if (m_lines.empty()) {
            return;
        }
        ++m_differences;
        m_out << fmt::format("~ {} / {} {}\n", one.sequence, other.sequence, Located(one, CallText(one, m_isFull)));
        for (const std::string& line : m_lines) {
            m_out << "    " << line << '\n';
        }
    }

    std::size_t Differences() const { return m_differences; }

private:
    void CompareArguments(const Record& one, const Record& other) {
        const std::size_t count = std::max(one.arguments.size(), other.arguments.size());
        for (std::size_t i = 0; i < count; ++i) {
            const nlohmann::json mine = i < one.arguments.size() ? one.arguments[i] : nlohmann::json();
            const nlohmann::json theirs = i < other.arguments.size() ? other.arguments[i] : nlohmann::json();
            CompareValues(fmt::format("argument {}", i + 1), mine, theirs);
        }
    }

    void CompareOutcomes(const Record& one, const Record& other) {
        const bool isAlike = IsSameValue(one.after, other.after) && one.code == other.code &&
                             one.description == other.description && one.argumentError == other.argumentError &&
                             one.isOpen == other.isOpen;
        if (isAlike) {
            CompareValues("result", one.result, other.result);
            return;
        }
        const std::string mine = OutcomeText(one, m_isFull);
        const std::string theirs = OutcomeText(other, m_isFull);
        if (mine != theirs) {
            TellBoth(mine, theirs);
        } else {
            TellBoth(OutcomeText(one, true), OutcomeText(other, true));
        }
    }

    void CompareValues(const std::string& what, const nlohmann::json& was, const nlohmann::json& is) {
        constexpr std::size_t mostLines = 8;
        const std::vector<ValueDifference> found = ValueDifferences(was, is, m_isFull);
        const std::size_t told = m_isFull ? found.size() : std::min(found.size(), mostLines);
        for (std::size_t i = 0; i < told; ++i) {
            m_lines.push_back(fmt::format("{}{}: was {}, is {}", what, found[i].place, found[i].was, found[i].is));
        }
        if (told < found.size()) {
            m_lines.push_back(fmt::format("{}: {} more differences, which --full shows", what, found.size() - told));
        }
    }

    static std::string WayOfCalling(const Record& record) {
        return fmt::format("kind of call {}{}", record.flags,
                           record.named.empty() ? "" : ", named arguments " + record.named.dump());
    }

    void TellBoth(const std::string& mine, const std::string& theirs) {
        m_lines.push_back("- " + mine);
        m_lines.push_back("+ " + theirs);
    }

    const bool m_isFull;
    std::ostream& m_out;
    std::size_t m_differences = 0;
    /// What differs between the two calls at hand.
    std::vector<std::string> m_lines;
};

} // namespace

std::size_t Diff(const Session& first, const Session& second, bool isFull, std::ostream& out) {
    const Calls mine = ComparedCalls(first);
    const Calls theirs = ComparedCalls(second);
    auto pairs = Alignment(mine, theirs).Pairs();
    pairs.emplace_back(static_cast<std::ptrdiff_t>(mine.size()), static_cast<std::ptrdiff_t>(theirs.size()));
    Comparison comparison(isFull, out);
    std::size_t x = 0;
    std::size_t y = 0;
    for (const auto& [pairX, pairY] : pairs) {
        for (; x < static_cast<std::size_t>(pairX); ++x) {
            comparison.OnlyIn('-', *mine[x]);
        }
        for (; y < static_cast<std::size_t>(pairY); ++y) {
            comparison.OnlyIn('+', *theirs[y]);
        }
        if (x < mine.size() && y < theirs.size()) {
            comparison.Compare(*mine[x++], *theirs[y++]);
        }
    }
    return comparison.Differences();
}

} // namespace kinora::trace

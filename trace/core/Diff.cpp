#include "trace/core/Diff.h"

#include "trace/core/Show.h"
#include "trace/core/ValueText.h"

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

/// A value without the numbers of its objects: these depend on everything that came before.
nlohmann::json WithoutIds(nlohmann::json value) {
    if (value.is_object()) {
        value.erase("id");
    }
    if (value.is_structured()) {
        for (nlohmann::json& inner : value) {
            inner = WithoutIds(std::move(inner));
        }
    }
    return value;
}

bool IsSame(const nlohmann::json& one, const nlohmann::json& other) {
    return one == other || WithoutIds(one) == WithoutIds(other);
}

class Comparison {
public:
    explicit Comparison(std::ostream& out) : m_out(out) {}

    void OnlyIn(char mark, const Record& record) {
        ++m_differences;
        m_out << fmt::format("{} {} {}{}\n", mark, record.sequence, Located(record, CallText(record, false)),
                             OutcomeText(record, false));
    }

    void Compare(const Record& one, const Record& other) {
        m_isTold = false;
        CompareArguments(one, other);
        Tell(one.flags == other.flags && one.named == other.named, one, other, WayOfCalling(one), WayOfCalling(other));
        Tell(IsSame(one.result, other.result) && IsSame(one.after, other.after) && one.code == other.code &&
                 one.description == other.description && one.argumentError == other.argumentError &&
                 one.isOpen == other.isOpen,
             one, other, OutcomeText(one, true), OutcomeText(other, true));
    }

    std::size_t Differences() const { return m_differences; }

private:
    void CompareArguments(const Record& one, const Record& other) {
        const std::size_t count = std::max(one.arguments.size(), other.arguments.size());
        for (std::size_t i = 0; i < count; ++i) {
            const nlohmann::json mine = i < one.arguments.size() ? one.arguments[i] : nlohmann::json();
            const nlohmann::json theirs = i < other.arguments.size() ? other.arguments[i] : nlohmann::json();
            Tell(IsSame(mine, theirs), one, other, fmt::format("argument {}: {}", i + 1, Whole(mine)),
                 fmt::format("argument {}: {}", i + 1, Whole(theirs)));
        }
    }

    static std::string WayOfCalling(const Record& record) {
        return fmt::format("kind of call {}{}", record.flags,
                           record.named.empty() ? "" : ", named arguments " + record.named.dump());
    }

    static std::string Whole(const nlohmann::json& value) { return ValueText(value, TextLimits::None()); }

    void Tell(bool isSame, const Record& one, const Record& other, const std::string& mine, const std::string& theirs) {
        if (isSame) {
            return;
        }
        if (!m_isTold) {
            m_out << fmt::format("~ {} / {} {}\n", one.sequence, other.sequence, Located(one, one.method));
            ++m_differences;
        }
        m_isTold = true;
        m_out << "    - " << mine << '\n' << "    + " << theirs << '\n';
    }

    std::ostream& m_out;
    std::size_t m_differences = 0;
    bool m_isTold = false;
};

} // namespace

std::size_t Diff(const Session& first, const Session& second, std::ostream& out) {
    const Calls mine = ComparedCalls(first);
    const Calls theirs = ComparedCalls(second);
    auto pairs = Alignment(mine, theirs).Pairs();
    pairs.emplace_back(static_cast<std::ptrdiff_t>(mine.size()), static_cast<std::ptrdiff_t>(theirs.size()));
    Comparison comparison(out);
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

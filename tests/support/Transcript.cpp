#include "tests/support/Transcript.h"

#include <algorithm>
#include <cctype>
#include <iomanip>
#include <sstream>
#include <vector>

namespace fake {
namespace {

/// What is longer is not shown whole.
constexpr std::size_t longestShown = 100;
/// Of a long call, so much is shown before the place where it differs.
constexpr std::size_t shownBefore = 50;
/// Calls shown before the one that differs, and after it.
constexpr std::size_t callsAround = 3;

bool IsBlank(char character) {
    return std::isspace(static_cast<unsigned char>(character)) != 0;
}

bool IsLetter(char character) {
    return std::isalpha(static_cast<unsigned char>(character)) != 0;
}

/// Index just behind the quoted text that begins at `start`.
std::size_t EndOfQuote(const std::string& text, std::size_t start) {
    std::size_t index = start + 1;
    while (index < text.size() && text[index] != '"') {
        index += text[index] == '\\' ? 2 : 1;
    }
    return std::min(index + 1, text.size());
}

/// Takes a text apart into its calls, without remarks, and with blanks outside of quotes as the notation sets them.
class CallReader {
public:
    explicit CallReader(const std::string& text) : m_text(text) {}

    std::vector<std::string> Read() {
        while (m_index < m_text.size()) {
            ReadToken();
        }
        EndCall();
        return m_calls;
    }

private:
    void ReadToken() {
        const char character = m_text[m_index];
        if (character == '#') {
            m_index = std::min(m_text.find('\n', m_index), m_text.size());
        } else if (character == '"') {
            const std::size_t start = m_index;
            m_index = EndOfQuote(m_text, start);
            Add(m_text.substr(start, m_index - start));
        } else if (m_text.compare(m_index, 2, "->") == 0) {
            ReadOutcome();
        } else {
            ++m_index;
            if (!IsBlank(character)) {
                AddPlain(character);
            }
        }
    }

    /// Ends the call: "-> fails" and the like stand behind everything else.
    void ReadOutcome() {
        m_isComplete = false;
        Add(" -> ");
        m_index += 2;
        while (m_index < m_text.size() && IsBlank(m_text[m_index])) {
            ++m_index;
        }
        while (m_index < m_text.size() && IsLetter(m_text[m_index])) {
            Add(std::string(1, m_text[m_index++]));
        }
        m_isComplete = true;
    }

    void AddPlain(char character) {
        Add(character == ',' ? ", " : std::string(1, character));
        const bool opens = character == '(' || character == '[';
        const bool closes = character == ')' || character == ']';
        m_depth += (opens ? 1 : 0) - (closes ? 1 : 0);
        m_isComplete = character == ')' && m_depth == 0; // unless an outcome follows
    }

    void Add(const std::string& text) {
        if (m_isComplete) {
            EndCall();
        }
        m_call += text;
    }

    void EndCall() {
        if (!m_call.empty()) {
            m_calls.push_back(m_call);
        }
        m_call.clear();
        m_isComplete = false;
    }

    const std::string& m_text;
    std::size_t m_index = 0;
    int m_depth = 0;
    bool m_isComplete = false;
    std::string m_call;
    std::vector<std::string> m_calls;
};

std::string OnOneLine(const std::string& tree) {
    std::string line;
    for (const std::string& part : CallReader(tree).Read()) {
        line += part;
    }
    return line;
}

/// So much of a text from an index on as is shown.
std::string Excerpt(const std::string& text, std::size_t start = 0) {
    const std::string shown = start < text.size() ? text.substr(start, longestShown) : "";
    return (start > 0 ? "..." : "") + shown + (start + longestShown < text.size() ? "..." : "");
}

/// Both texts: whole when they are short, else around the place where they begin to differ, marked.
std::string BothTexts(const std::string& expected, const std::string& actual) {
    if (std::max(expected.size(), actual.size()) <= longestShown) {
        return "expected " + expected + ", was " + actual;
    }
    const auto place = static_cast<std::size_t>(
        std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end()).first - expected.begin());
    const std::size_t start = place < shownBefore ? 0 : place - shownBefore;
    const std::string margin(place - start + (start > 0 ? 3 : 0), ' ');
    return "differs at character " + std::to_string(place + 1) + "\n  expected " + Excerpt(expected, start) +
           "\n  was      " + Excerpt(actual, start) + "\n           " + margin + "^";
}

/// The calls around one of them, that one marked.
std::string CallsAround(const std::vector<std::string>& calls, std::size_t place) {
    const std::size_t first = place < callsAround ? 0 : place - callsAround;
    const std::size_t end = std::min(place + callsAround + 1, calls.size());
    const auto width = static_cast<int>(std::to_string(end).size());
    std::ostringstream lines;
    for (std::size_t index = first; index < end; ++index) {
        lines << (index == place ? "\n  > " : "\n    ") << std::setw(width) << index + 1 << "  "
              << Excerpt(calls[index]);
    }
    return lines.str();
}

testing::AssertionResult Compare(const std::string& journal, const std::string& transcript) {
    const std::vector<std::string> actual = CallReader(journal).Read();
    const std::vector<std::string> expected = CallReader(transcript).Read();
    if (actual == expected) {
        return testing::AssertionSuccess();
    }
    const auto place = static_cast<std::size_t>(
        std::mismatch(actual.begin(), actual.end(), expected.begin(), expected.end()).first - actual.begin());
    auto failure = testing::AssertionFailure() << "call " << place + 1 << ": ";
    if (place == actual.size()) {
        failure << "expected " << Excerpt(expected[place]) << ", was nothing";
    } else if (place == expected.size()) {
        failure << "expected nothing, was " << Excerpt(actual[place]);
    } else {
        failure << BothTexts(expected[place], actual[place]);
    }
    if (actual.size() != expected.size()) {
        failure << "\n" << actual.size() << " calls, expected " << expected.size();
    }
    const bool endsEarly = place == actual.size();
    return failure << (endsEarly ? "\nexpected around it:" : "\naround it:")
                   << CallsAround(endsEarly ? expected : actual, place);
}

} // namespace

testing::AssertionResult MatchesTranscript(const char*, const char*, const World& world,
                                           const std::string& transcript) {
    return Compare(world.Journal(), transcript);
}

testing::AssertionResult MatchesTranscript(const char*, const char*, const std::string& journal,
                                           const std::string& transcript) {
    return Compare(journal, transcript);
}

testing::AssertionResult MatchesTree(const char*, const char*, const VARIANT& variant, const std::string& tree) {
    const std::string layout = Layout(Read(variant), 0);
    const std::string actual = OnOneLine(layout);
    const std::string expected = OnOneLine(tree);
    if (actual == expected) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << BothTexts(expected, actual) << "\nthe whole is " << layout;
}

} // namespace fake

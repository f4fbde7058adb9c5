#include "tests/support/Transcript.h"

#include <algorithm>
#include <cctype>

namespace fake {
namespace {

/// Index just behind the quoted text that begins at `start`.
std::size_t EndOfQuote(const std::string& text, std::size_t start) {
    std::size_t index = start + 1;
    while (index < text.size() && text[index] != '"') {
        index += text[index] == '\\' ? 2 : 1;
    }
    return std::min(index + 1, text.size());
}

/// The text without remarks and without blanks outside of quotes.
std::string Condensed(const std::string& text) {
    std::string condensed;
    for (std::size_t index = 0; index < text.size();) {
        if (text[index] == '"') {
            const std::size_t end = EndOfQuote(text, index);
            condensed.append(text, index, end - index);
            index = end;
        } else if (text[index] == '#') {
            index = std::min(text.find('\n', index), text.size());
        } else {
            if (std::isspace(static_cast<unsigned char>(text[index])) == 0) {
                condensed += text[index];
            }
            ++index;
        }
    }
    return condensed;
}

testing::AssertionResult Compare(const std::string& actual, const std::string& expected) {
    const std::string actualText = Condensed(actual);
    const std::string expectedText = Condensed(expected);
    if (actualText == expectedText) {
        return testing::AssertionSuccess();
    }
    const auto difference = static_cast<std::size_t>(
        std::mismatch(actualText.begin(), actualText.end(), expectedText.begin(), expectedText.end()).first -
        actualText.begin());
    const std::size_t start = difference < 60 ? 0 : difference - 60;
    return testing::AssertionFailure() << "was\n"
                                       << actual
                                       << "\nwhich differs from what is expected at the end of\n  was      ..."
                                       << actualText.substr(start, difference - start + 60) << "\n  expected ..."
                                       << expectedText.substr(start, difference - start + 60);
}

} // namespace

testing::AssertionResult MatchesTranscript(const char*, const char*, const World& world,
                                           const std::string& transcript) {
    return Compare(world.Journal(), transcript);
}

testing::AssertionResult MatchesTree(const char*, const char*, const VARIANT& variant, const std::string& tree) {
    return Compare(Layout(Read(variant), 0), tree);
}

} // namespace fake

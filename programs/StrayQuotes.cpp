#include "programs/StrayQuotes.h"

#include "programs/Errors.h"

namespace kinora::programs {

std::vector<std::string> WithoutStrayQuotes(std::vector<std::string> words) {
    for (std::string& word : words) {
        const std::size_t quote = word.find('"');
        // Quotes are no part of any path. After a "=" there may be a text in quotes.
        if (quote == std::string::npos || word.find('=') < quote) {
            continue;
        }
        const std::string folder = word.substr(0, quote);
        if (quote + 1 < word.size()) {
            std::string text = word;
            text.append(": a quote in an argument; in \"").append(folder);
            text.append("\\\" the last backslash keeps the quote from closing: leave it out, \"")
                .append(folder)
                .append("\".");
            throw InputError(text);
        }
        word.back() = '\\';
    }
    return words;
}

} // namespace kinora::programs

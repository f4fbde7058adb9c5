#include "scenario/UniqueNames.h"

#include "scenario/Text.h"

#include <algorithm>
#include <cctype>
#include <fmt/format.h>

namespace kinora::scenario {

std::string LowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

void UniqueNames::Add(const Node& node, const std::string& kind, std::initializer_list<std::string> others) {
    const std::string key = LowerCase(node.Text());
    const auto [first, last] = m_names.equal_range(key);
    const auto same = std::find_if(first, last, [&](const auto& entry) {
        const std::string& other = entry.second.kind;
        return other == kind || std::find(others.begin(), others.end(), other) != others.end();
    });
    if (same != last) {
        const auto& [otherKind, otherName] = same->second;
        node.Report(fmt::format("{} {} is called \"{}\" already (upper and lower case count as the same).",
                                otherKind == kind ? "another" : "a", otherKind, otherName));
        return;
    }
    m_names.emplace(key, Named{kind, node.Text()});
}

} // namespace kinora::scenario

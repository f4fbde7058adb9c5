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

void UniqueNames::Add(const Node& node) {
    const auto [same, isNew] = m_names.emplace(LowerCase(node.Text()), node.Text());
    if (!isNew) {
        node.Report(fmt::format("another {} is called \"{}\" already (upper and lower case count as the same).", m_kind,
                                same->second));
    }
}

} // namespace kinora::scenario

#include "simulator/commands/Pairs.h"

#include "simulator/commands/Requirements.h"
#include "simulator/model/DesktopError.h"
#include "simulator/model/Text.h"

#include <string_view>

namespace vantor::commands {

using model::DesktopError;
using model::ErrorCode;
using model::Quoted;

std::vector<std::pair<std::string, const Value*>> ReadPairs(const Value::List& elements, const std::string& location) {
    constexpr std::string_view mark = ":=";
    std::vector<std::pair<std::string, const Value*>> pairs;
    for (std::size_t i = 0; i < elements.size(); i += 2) {
        const std::string elementLocation = location + ", element " + std::to_string(i + 1);
        const std::string& key = RequireText(elements[i], elementLocation);
        if (key.size() < mark.size() || key.compare(key.size() - mark.size(), mark.size(), mark) != 0) {
            throw DesktopError(ErrorCode::InvalidArgument,
                               elementLocation + ": a key that ends in \":=\" is needed, not " + Quoted(key));
        }
        if (i + 1 == elements.size()) {
            throw DesktopError(ErrorCode::IncompleteArray, location + ": the value of " + Quoted(key) + " is missing");
        }
        pairs.emplace_back(key.substr(0, key.size() - mark.size()), &elements[i + 1]);
    }
    return pairs;
}

} // namespace vantor::commands

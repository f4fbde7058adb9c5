#include "trace/core/ValueDiff.h"

#include "trace/core/ValueText.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace kinora::trace {
namespace {

using nlohmann::json;

json WithoutIds(json value) {
    if (value.is_object()) {
        value.erase("id");
    }
    if (value.is_structured()) {
        for (json& inner : value) {
            inner = WithoutIds(std::move(inner));
        }
    }
    return value;
}

bool IsOfType(const json& value, const char* type) {
    return value.is_object() && value.value("vt", "").rfind(type, 0) == 0 && value.contains("v");
}

std::string TextOf(const json& value) {
    const json content = value.is_object() ? value.value("v", json()) : json();
    return content.is_string() ? content.get<std::string>() : std::string();
}

/// An element; null beyond the end.
json ElementOr(const json& elements, std::size_t index) {
    return index < elements.size() ? elements[index] : json();
}

/// What an element stands for in the lists of the scripting interface, which begin with their name and give a key
/// before each value.
std::string NamesOf(const json& elements, std::size_t index) {
    const std::string name = index == 0 ? "" : TextOf(elements[0]);
    const std::string key = index < 1 || index > elements.size() ? "" : TextOf(elements[index - 1]);
    const bool isNamed = name.rfind("NAME:", 0) == 0;
    const bool hasKey = key.size() > 2 && key.compare(key.size() - 2, 2, ":=") == 0;
    if (!isNamed && !hasKey) {
        return {};
    }
    return " (" + (isNamed ? name : "") + (isNamed && hasKey ? ", " : "") + (hasKey ? key : "") + ")";
}

class Search {
public:
    explicit Search(bool isFull) : m_limits(isFull ? TextLimits::None() : TextLimits{}) {}

    /// @param path   indices in brackets
    /// @param names  of the value itself
    void Compare(const json& was, const json& is, const std::string& path, const std::string& names) {
        if (IsSameValue(was, is)) {
            return;
        }
        const std::size_t before = m_found.size();
        const bool isSameType = was.is_object() && is.is_object() && was.value("vt", "") == is.value("vt", "");
        if (isSameType && IsOfType(was, "ARRAY") && IsOfType(is, "ARRAY")) {
            CompareLists(was, is, path, names);
        } else if (isSameType && IsOfType(was, "BYREF") && IsOfType(is, "BYREF")) {
            Compare(was["v"], is["v"], path, names);
        } else {
            AddTexts(was, is, path, names);
        }
        if (m_found.size() == before) {
            Add(path, names, was.dump(), is.dump());
        }
    }

    std::vector<ValueDifference> Take() { return std::move(m_found); }

private:
    void CompareLists(const json& was, const json& is, const std::string& path, const std::string& names) {
        const json& mine = was["v"];
        const json& theirs = is["v"];
        const std::size_t myCount = was.value("count", mine.size());
        const std::size_t theirCount = is.value("count", theirs.size());
        if (myCount != theirCount) {
            Add(path, names, fmt::format("a list of {}", myCount), fmt::format("a list of {}", theirCount));
        }
        for (std::size_t i = 0; i < std::max(mine.size(), theirs.size()); ++i) {
            Compare(ElementOr(mine, i), ElementOr(theirs, i), fmt::format("{}[{}]", path, i),
                    NamesOf(i < mine.size() ? mine : theirs, i));
        }
    }

    void AddTexts(const json& was, const json& is, const std::string& path, const std::string& names) {
        const std::string mine = ValueText(was, m_limits);
        const std::string theirs = ValueText(is, m_limits);
        if (mine != theirs) {
            Add(path, names, mine, theirs);
        } else {
            Add(path, names, ValueText(was, TextLimits::None()), ValueText(is, TextLimits::None()));
        }
    }

    void Add(const std::string& path, const std::string& names, std::string was, std::string is) {
        m_found.push_back({(path.empty() ? "" : " " + path) + names, std::move(was), std::move(is)});
    }

    const TextLimits m_limits;
    std::vector<ValueDifference> m_found;
};

} // namespace

bool IsSameValue(const json& one, const json& other) {
    return one == other || WithoutIds(one) == WithoutIds(other);
}

std::vector<ValueDifference> ValueDifferences(const json& was, const json& is, bool isFull) {
    Search search(isFull);
    search.Compare(was, is, "", "");
    return search.Take();
}

} // namespace kinora::trace

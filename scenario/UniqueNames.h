#pragma once

#include "scenario/Node.h"

#include <map>
#include <string>

namespace kinora::scenario {

/// How names are compared where letter case does not count.
std::string LowerCase(std::string text);

/// Names that may stand once; the desktop and the file system do not tell upper from lower case.
class UniqueNames {
public:
    /// @param kind  what is named, for what is reported
    explicit UniqueNames(const char* kind) : m_kind(kind) {}

    /// Reports a name that stands already.
    void Add(const Node& node);

private:
    const char* m_kind;
    /// By their lower case.
    std::map<std::string, std::string> m_names;
};

} // namespace kinora::scenario

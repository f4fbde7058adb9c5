#pragma once

#include "scenario/Node.h"

#include <initializer_list>
#include <map>
#include <string>

namespace kinora::scenario {

/// How names are compared where letter case does not count.
std::string LowerCase(std::string text);

/// Names that may stand once; the desktop and the file system do not tell upper from lower case.
class UniqueNames {
public:
    /// Reports a name that stands already.
    /// @param kind    what is named: "body"
    /// @param others  the other kinds among which the name may not stand either
    void Add(const Node& node, const std::string& kind, std::initializer_list<std::string> others = {});

private:
    struct Named {
        std::string kind;
        std::string name;
    };

    /// By their lower case.
    std::multimap<std::string, Named> m_names;
};

} // namespace kinora::scenario

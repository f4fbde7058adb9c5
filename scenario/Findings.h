#pragma once

#include "scenario/JsonLocations.h"

#include <cstddef>
#include <string>
#include <vector>

namespace kinora::scenario {

/// Collects what is wrong with a JSON document, so that everything can be said at once.
class Findings {
public:
    /// @param locations  must outlive this object
    /// @param fileName   named in every line; must outlive this object
    Findings(const JsonLocations& locations, const std::string& fileName)
        : m_locations(locations), m_fileName(fileName) {}

    /// A line about the value at a JSON pointer: file, line or what put it there, pointer and text.
    std::string Line(const std::string& pointer, const std::string& text) const;

    void Add(const std::string& pointer, const std::string& text);

    /// @throws InputError  anything has been found; one line per finding, in the order of the document
    void ThrowIfAny() const;

private:
    struct Finding {
        std::size_t order = 0;
        std::string line;
    };

    const JsonLocations& m_locations;
    const std::string& m_fileName;
    std::vector<Finding> m_findings;
};

} // namespace kinora::scenario

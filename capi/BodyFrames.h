#pragma once

#include "capi/Records.h"

#include <array>
#include <map>
#include <string>
#include <vector>

namespace kinora::capi {

/// The frames of a project's bodies. The desktop sees a body in the axes D: the global axes while the body is as drawn,
/// moving with the body from there; the caller sees it in its own axes B. What leads from the one to the other is the
/// orientation in which the body is drawn, and stays the same. Of a body that is not known D and B are the same.
class BodyFrames {
public:
    using Result = IKinoraVeltrixInterface::Result;

    /// Learns how bodies are drawn, and puts the groups and materials into the axes D.
    void Declare(std::vector<Group>& groups, std::map<std::string, Material>& materials);

    /// Turns the rows of the poses' rotations, the axes B, into what the desktop makes the axes D of.
    void ToDesktop(std::vector<Transform>& poses) const;

    /// @param result  newtons and millinewton-metres, in the axes D
    /// @param load    receives newtons and newton-metres, in the axes B
    void ToBody(const std::string& body, const Result& result, kv_load& load) const;

private:
    using Matrix = std::array<double, 9>;

    /// R_BW of the body as drawn; null where D and B are the same.
    const Matrix* Drawn(const std::string& body) const;

    std::map<std::string, Matrix> m_drawn;
};

} // namespace kinora::capi

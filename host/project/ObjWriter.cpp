#include "host/project/ObjWriter.h"

#include <cmath>
#include <fmt/format.h>

namespace kinora::host {
namespace {

constexpr double twoPi = 6.28318530717958647693;

/// The ends of so many equal steps.
std::vector<double> Angles(double from, double to, int steps) {
    std::vector<double> angles;
    angles.reserve(static_cast<std::size_t>(steps) + 1);
    for (int i = 0; i <= steps; ++i) {
        angles.push_back(from + (to - from) * i / steps);
    }
    return angles;
}

} // namespace

ObjWriter::ObjWriter(const std::string& title)
    : m_text(fmt::format("# {}\n# Lengths in millimetres. Made by kinora-run.\n", title)) {}

void ObjWriter::AddBlock(const std::string& name, const scenario::Vector& lower, const scenario::Vector& upper) {
    m_text += fmt::format("o {}\n", name);
    m_before = m_vertices;
    for (const double z : {lower.z(), upper.z()}) {
        AddVertex(lower.x(), lower.y(), z);
        AddVertex(upper.x(), lower.y(), z);
        AddVertex(upper.x(), upper.y(), z);
        AddVertex(lower.x(), upper.y(), z);
    }
    AddFace({3, 2, 1, 0});
    AddFace({4, 5, 6, 7});
    for (std::size_t i = 0; i < 4; ++i) {
        const std::size_t next = (i + 1) % 4;
        AddFace({i, next, next + 4, i + 4});
    }
}

void ObjWriter::AddRing(const std::string& name, const Section& section, int sides) {
    AddArc(name, section, Angles(0.0, twoPi * (sides - 1) / sides, sides - 1), true);
}

void ObjWriter::AddSector(const std::string& name, const Section& section, double from, double to, int sides) {
    AddArc(name, section, Angles(from, to, sides), false);
}

void ObjWriter::AddArc(const std::string& name, const Section& section, const std::vector<double>& angles,
                       bool isWhole) {
    m_text += fmt::format("o {}\n", name);
    m_before = m_vertices;
    // Four vertices for each angle: inside and outside below, outside and inside above.
    for (const double angle : angles) {
        const double x = std::cos(angle);
        const double y = std::sin(angle);
        AddVertex(section.inner * x, section.inner * y, section.bottom);
        AddVertex(section.outer * x, section.outer * y, section.bottom);
        AddVertex(section.outer * x, section.outer * y, section.top);
        AddVertex(section.inner * x, section.inner * y, section.top);
    }
    const std::size_t count = angles.size();
    for (std::size_t i = 0; i + (isWhole ? 0 : 1) < count; ++i) {
        const std::size_t here = 4 * i;
        const std::size_t next = 4 * ((i + 1) % count);
        for (std::size_t corner = 0; corner < 4; ++corner) {
            const std::size_t other = (corner + 1) % 4;
            AddFace({here + corner, next + corner, next + other, here + other});
        }
    }
    if (!isWhole) {
        const std::size_t last = 4 * (count - 1);
        AddFace({0, 1, 2, 3});
        AddFace({last + 3, last + 2, last + 1, last});
    }
}

void ObjWriter::AddVertex(double x, double y, double z) {
    m_text += fmt::format("v {:.9g} {:.9g} {:.9g}\n", x, y, z);
    ++m_vertices;
}

void ObjWriter::AddFace(const std::vector<std::size_t>& corners) {
    m_text += 'f';
    for (const std::size_t corner : corners) {
        m_text += fmt::format(" {}", m_before + corner + 1);
    }
    m_text += '\n';
}

} // namespace kinora::host

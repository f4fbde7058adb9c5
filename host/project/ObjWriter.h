#pragma once

#include "scenario/Rigid.h"

#include <cstddef>
#include <string>
#include <vector>

namespace kinora::host {

/// Writes solids as the objects of a Wavefront OBJ file, each closed, with its faces outward.
class ObjWriter {
public:
    /// @param title  one line for people
    explicit ObjWriter(const std::string& title);

    /// A block with its edges along the axes.
    void AddBlock(const std::string& name, const scenario::Vector& lower, const scenario::Vector& upper);

    /// What the rings about the z axis have in common, in the file's unit.
    struct Section {
        double inner;
        double outer;
        double bottom;
        double top;
    };

    /// A whole ring about the z axis, of so many sides. The radii are those of its corners.
    void AddRing(const std::string& name, const Section& section, int sides);

    /// A piece of such a ring from one angle to another, radians.
    void AddSector(const std::string& name, const Section& section, double from, double to, int sides);

    const std::string& Text() const { return m_text; }

private:
    void AddArc(const std::string& name, const Section& section, const std::vector<double>& angles, bool isWhole);
    void AddVertex(double x, double y, double z);
    /// @param corners  counted from the first vertex of the object, counter-clockwise from outside
    void AddFace(const std::vector<std::size_t>& corners);

    std::string m_text;
    std::size_t m_vertices = 0;
    /// How many vertices stand before the present object.
    std::size_t m_before = 0;
};

} // namespace kinora::host

#pragma once
// Surfaces in patches: narrow ones along edges, where charge grows without bound, small ones near other bodies.
#include "simulator/solver/Patch.h"
#include "simulator/solver/SolidFaces.h"

#include <algorithm>
#include <functional>

namespace vantor::solver {

/// How finely a surface is divided.
struct Fineness {
    /// How wide a patch along a sharp edge may be, m; farther away it may be about as wide as it is far.
    double layer = 0;
    /// How wide a patch may be at most, m.
    double width = 0;
    /// How wide it may be at most over its distance from others, and how wide however near they are.
    double nearness = 0, least = 0;
};

/// Faces that are together one smooth surface between the same two solids, and the edges where it ends or bends
/// sharply.
struct Surface {
    std::size_t inside = 0;
    std::optional<std::size_t> outside;
    std::vector<Polygon> polygons;
    struct Segment {
        Eigen::Vector3d start, end;

        Eigen::Vector3d NearestTo(const Eigen::Vector3d& point) const {
            const Eigen::Vector3d along = end - start;
            return start + std::clamp((point - start).dot(along) / along.squaredNorm(), 0.0, 1.0) * along;
        }
    };
    std::vector<Segment> sharpEdges;
};

std::vector<Surface> SurfacesOf(const std::vector<SolidFace>& faces);

/// @param distance  of a point from others that are near; may be less than it is, and infinite without others
/// @param most  after how many patches to stop
/// @return more than `most`, and not all, where there would be more
std::vector<Patch> Divided(const Surface& surface, const Fineness& fineness,
                           const std::function<double(const Eigen::Vector3d&)>& distance, std::size_t most);

} // namespace vantor::solver

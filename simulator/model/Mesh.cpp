#include "simulator/model/Mesh.h"

#include <Eigen/Geometry>
#include <cmath>
#include <cstring>
#include <numeric>
#include <unordered_map>

namespace vantor::model {
namespace {

constexpr double twoPi = 6.28318530717958647692;

std::uint64_t HashBytes(const void* data, std::size_t size, std::uint64_t hash) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    for (std::size_t i = 0; i < size; ++i) {
        hash = (hash ^ bytes[i]) * 1099511628211ULL;
    }
    return hash;
}

struct PointHash {
    std::size_t operator()(const std::array<double, 3>& point) const {
        return static_cast<std::size_t>(HashBytes(point.data(), sizeof(point), 14695981039346656037ULL));
    }
};

struct Corners {
    Eigen::Vector3d a, b, c;
};

Corners CornersOf(const Mesh& mesh, std::size_t triangle) {
    const auto& t = mesh.triangles[triangle];
    const auto at = [&mesh](int index) { return mesh.vertices[static_cast<std::size_t>(index)]; };
    return {at(t[0]), at(t[1]), at(t[2])};
}

double CornerVolume(const Corners& t, const Eigen::Vector3d& origin) {
    return (t.a - origin).dot((t.b - origin).cross(t.c - origin)) / 6.0;
}

void CheckFinite(const Mesh& mesh) {
    for (const auto& vertex : mesh.vertices) {
        if (!vertex.allFinite() || vertex.cwiseAbs().maxCoeff() > 1e12) {
            throw MeshError("a vertex lies at infinity", -1);
        }
    }
}

void CheckDegenerate(const Mesh& mesh) {
    Box box;
    for (const auto& vertex : mesh.vertices) {
        box.Add(vertex);
    }
    const double smallest = 1e-14 * (box.upper - box.lower).squaredNorm();
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        const Corners t = CornersOf(mesh, i);
        if (!((t.b - t.a).cross(t.c - t.a).norm() > smallest)) {
            throw MeshError("a degenerate face (no area)", static_cast<int>(i));
        }
    }
}

std::uint64_t EdgeKey(int from, int to) {
    return (static_cast<std::uint64_t>(from) << 32U) | static_cast<std::uint32_t>(to);
}

/// Every directed edge with the triangle that runs along it.
std::unordered_map<std::uint64_t, int> DirectedEdges(const Mesh& mesh) {
    std::unordered_map<std::uint64_t, int> edges;
    edges.reserve(mesh.triangles.size() * 3);
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        const auto& t = mesh.triangles[i];
        for (std::size_t k = 0; k < 3; ++k) {
            if (!edges.emplace(EdgeKey(t[k], t[(k + 1) % 3]), static_cast<int>(i)).second) {
                throw MeshError("an edge is used twice in one direction: more than two faces meet there, or "
                                "neighbouring faces are oriented differently",
                                static_cast<int>(i));
            }
        }
    }
    return edges;
}

void CheckClosed(const Mesh& mesh) {
    const auto edges = DirectedEdges(mesh);
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        const auto& t = mesh.triangles[i];
        for (std::size_t k = 0; k < 3; ++k) {
            if (edges.find(EdgeKey(t[(k + 1) % 3], t[k])) == edges.end()) {
                throw MeshError("the surface is open at an edge of this face", static_cast<int>(i));
            }
        }
    }
}

/// Connected shells, as the shell number of each triangle, and their signed volumes.
struct Shells {
    std::vector<int> ofTriangle;
    std::vector<double> volumes;
};

Shells FindShells(const Mesh& mesh) {
    std::vector<int> parent(mesh.vertices.size());
    std::iota(parent.begin(), parent.end(), 0);
    const auto root = [&parent](int vertex) {
        auto at = [&parent](int index) -> int& { return parent[static_cast<std::size_t>(index)]; };
        while (at(vertex) != vertex) {
            at(vertex) = at(at(vertex));
            vertex = at(vertex);
        }
        return vertex;
    };
    for (const auto& t : mesh.triangles) {
        parent[static_cast<std::size_t>(root(t[1]))] = root(t[0]);
        parent[static_cast<std::size_t>(root(t[2]))] = root(t[0]);
    }
    Shells shells;
    std::unordered_map<int, int> numbers;
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        const auto inserted = numbers.emplace(root(mesh.triangles[i][0]), static_cast<int>(shells.volumes.size()));
        if (inserted.second) {
            shells.volumes.push_back(0.0);
        }
        shells.ofTriangle.push_back(inserted.first->second);
        shells.volumes[static_cast<std::size_t>(inserted.first->second)] +=
            CornerVolume(CornersOf(mesh, i), mesh.vertices[0]);
    }
    return shells;
}

/// Solid angle of a triangle seen from a point over 4 pi (A. van Oosterom and J. Strackee, 1983).
double WindingPart(const Corners& t, const Eigen::Vector3d& point) {
    const Eigen::Vector3d a = t.a - point, b = t.b - point, c = t.c - point;
    const double la = a.norm(), lb = b.norm(), lc = c.norm();
    const double numerator = a.dot(b.cross(c));
    const double denominator = la * lb * lc + a.dot(b) * lc + b.dot(c) * la + c.dot(a) * lb;
    return std::atan2(numerator, denominator) / twoPi;
}

void CheckCavities(const Mesh& mesh, const Shells& shells) {
    std::vector<bool> seen(shells.volumes.size(), false);
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        const auto shell = static_cast<std::size_t>(shells.ofTriangle[i]);
        if (seen[shell] || shells.volumes[shell] >= 0.0) {
            continue;
        }
        seen[shell] = true;
        const Eigen::Vector3d point = mesh.vertices[static_cast<std::size_t>(mesh.triangles[i][0])];
        double winding = 0.0;
        for (std::size_t k = 0; k < mesh.triangles.size(); ++k) {
            if (shells.volumes[static_cast<std::size_t>(shells.ofTriangle[k])] > 0.0) {
                winding += WindingPart(CornersOf(mesh, k), point);
            }
        }
        if (winding < 0.5) {
            throw MeshError("a shell is inside out and is not the cavity of another", static_cast<int>(i));
        }
    }
}

} // namespace

Mesh Welded(const Mesh& mesh) {
    Mesh welded;
    welded.triangles.reserve(mesh.triangles.size());
    std::unordered_map<std::array<double, 3>, int, PointHash> vertexAt;
    for (const auto& triangle : mesh.triangles) {
        std::array<int, 3> corners{};
        for (std::size_t k = 0; k < 3; ++k) {
            const Eigen::Vector3d& v = mesh.vertices[static_cast<std::size_t>(triangle[k])];
            // Adding zero turns a negative zero into a positive one: both are one position.
            const std::array<double, 3> position = {v.x() + 0.0, v.y() + 0.0, v.z() + 0.0};
            const auto inserted = vertexAt.emplace(position, static_cast<int>(welded.vertices.size()));
            if (inserted.second) {
                welded.vertices.push_back(v);
            }
            corners[k] = inserted.first->second;
        }
        welded.triangles.push_back(corners);
    }
    return welded;
}

double SignedVolume(const Mesh& mesh) {
    double volume = 0.0;
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        volume += CornerVolume(CornersOf(mesh, i), mesh.vertices[0]);
    }
    return volume;
}

bool MakeSolid(Mesh& mesh) {
    if (mesh.triangles.empty()) {
        throw MeshError("there are no faces", -1);
    }
    CheckFinite(mesh);
    CheckDegenerate(mesh);
    CheckClosed(mesh);
    const bool turned = SignedVolume(mesh) < 0.0;
    if (turned) {
        for (auto& triangle : mesh.triangles) {
            std::swap(triangle[1], triangle[2]);
        }
    }
    CheckCavities(mesh, FindShells(mesh));
    return turned;
}

std::uint64_t Fingerprint(const Mesh& mesh) {
    std::uint64_t hash = 14695981039346656037ULL;
    for (const auto& vertex : mesh.vertices) {
        hash = HashBytes(vertex.data(), 3 * sizeof(double), hash);
    }
    for (const auto& triangle : mesh.triangles) {
        hash = HashBytes(triangle.data(), sizeof(triangle), hash);
    }
    return hash;
}

void Box::Add(const Eigen::Vector3d& point) {
    lower = lower.cwiseMin(point);
    upper = upper.cwiseMax(point);
}

Mesh BoxMesh(const Box& box) {
    Mesh mesh;
    for (int corner = 0; corner < 8; ++corner) {
        mesh.vertices.emplace_back((corner & 1) != 0 ? box.upper.x() : box.lower.x(),
                                   (corner & 2) != 0 ? box.upper.y() : box.lower.y(),
                                   (corner & 4) != 0 ? box.upper.z() : box.lower.z());
    }
    mesh.triangles = {{0, 2, 3}, {0, 3, 1}, {4, 5, 7}, {4, 7, 6}, {0, 1, 5}, {0, 5, 4},
                      {2, 6, 7}, {2, 7, 3}, {0, 4, 6}, {0, 6, 2}, {1, 3, 7}, {1, 7, 5}};
    return mesh;
}

} // namespace vantor::model

#include "simulator/model/Mesh.h"

#include "simulator/geometry/NumberTable.h"

#include <Eigen/Geometry>
#include <algorithm>
#include <cmath>
#include <numeric>

namespace vantor::model {
namespace {

using geometry::NumberTable;

constexpr double twoPi = 6.28318530717958647692;

std::uint64_t HashBytes(const void* data, std::size_t size, std::uint64_t hash) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    for (std::size_t i = 0; i < size; ++i) {
        hash = (hash ^ bytes[i]) * 1099511628211ULL;
    }
    return hash;
}

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

/// The edges of a mesh in the direction in which their triangles run along them; edge 3 i + k begins at corner k of
/// triangle i.
class DirectedEdges {
public:
    explicit DirectedEdges(const Mesh& mesh) : m_mesh(mesh), m_table(3 * mesh.triangles.size()) {
        for (std::size_t edge = 0; edge < 3 * mesh.triangles.size(); ++edge) {
            NumberTable::Number& place = At(CornerOf(edge, 0), CornerOf(edge, 1));
            if (place != NumberTable::none) {
                throw MeshError("an edge is used twice in one direction: more than two faces meet there, or "
                                "neighbouring faces are oriented differently",
                                static_cast<int>(edge / 3));
            }
            place = static_cast<NumberTable::Number>(edge);
        }
    }

    bool HasOpposite(std::size_t edge) { return At(CornerOf(edge, 1), CornerOf(edge, 0)) != NumberTable::none; }

private:
    int CornerOf(std::size_t edge, std::size_t next) const { return m_mesh.triangles[edge / 3][(edge + next) % 3]; }

    NumberTable::Number& At(int from, int to) {
        const std::uint64_t hash = geometry::HashOf(static_cast<std::uint32_t>(from), static_cast<std::uint32_t>(to));
        return m_table.At(
            hash, [&](NumberTable::Number other) { return CornerOf(other, 0) == from && CornerOf(other, 1) == to; });
    }

    const Mesh& m_mesh;
    NumberTable m_table;
};

void CheckClosed(const Mesh& mesh) {
    DirectedEdges edges(mesh);
    for (std::size_t edge = 0; edge < 3 * mesh.triangles.size(); ++edge) {
        if (!edges.HasOpposite(edge)) {
            throw MeshError("the surface is open at an edge of this face", static_cast<int>(edge / 3));
        }
    }
}

/// Triangles that hang together.
struct Shell {
    /// Signed, against the common point of all shells of a mesh.
    double volume = 0.0;
    Box box;
    std::vector<std::size_t> triangles;
};

/// The number of each vertex's shell, not consecutive.
std::vector<int> ShellsOfVertices(const Mesh& mesh) {
    std::vector<int> parent(mesh.vertices.size());
    std::iota(parent.begin(), parent.end(), 0);
    const auto at = [&parent](int index) -> int& { return parent[static_cast<std::size_t>(index)]; };
    const auto root = [&at](int vertex) {
        while (at(vertex) != vertex) {
            at(vertex) = at(at(vertex));
            vertex = at(vertex);
        }
        return vertex;
    };
    for (const auto& t : mesh.triangles) {
        at(root(t[1])) = root(t[0]);
        at(root(t[2])) = root(t[0]);
    }
    for (int vertex = 0; vertex < static_cast<int>(parent.size()); ++vertex) {
        at(vertex) = root(vertex);
    }
    return parent;
}

/// The shells in the order of their first triangles.
std::vector<Shell> FindShells(const Mesh& mesh) {
    const std::vector<int> shellOfVertex = ShellsOfVertices(mesh);
    std::vector<Shell> shells;
    std::vector<int> numbers(mesh.vertices.size(), -1);
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        int& number = numbers[static_cast<std::size_t>(shellOfVertex[static_cast<std::size_t>(mesh.triangles[i][0])])];
        if (number < 0) {
            number = static_cast<int>(shells.size());
            shells.emplace_back();
        }
        Shell& shell = shells[static_cast<std::size_t>(number)];
        const Corners corners = CornersOf(mesh, i);
        shell.triangles.push_back(i);
        shell.volume += CornerVolume(corners, mesh.vertices[0]);
        for (const Eigen::Vector3d& corner : {corners.a, corners.b, corners.c}) {
            shell.box.Add(corner);
        }
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

/// How often the outward shells enclose a point.
double Winding(const Mesh& mesh, const std::vector<Shell>& shells, const Eigen::Vector3d& point) {
    double winding = 0.0;
    for (const Shell& shell : shells) {
        if (shell.volume > 0.0 && shell.box.Contains(point)) {
            for (const std::size_t triangle : shell.triangles) {
                winding += WindingPart(CornersOf(mesh, triangle), point);
            }
        }
    }
    return winding;
}

void CheckCavities(const Mesh& mesh, const std::vector<Shell>& shells) {
    for (const Shell& shell : shells) {
        const std::size_t first = shell.triangles.front();
        if (shell.volume < 0.0 && Winding(mesh, shells, CornersOf(mesh, first).a) < 0.5) {
            throw MeshError("a shell is inside out and is not the cavity of another", static_cast<int>(first));
        }
    }
}

} // namespace

Mesh Welded(const std::vector<Eigen::Vector3d>& vertices, const std::vector<std::array<int, 3>>& triangles) {
    Mesh welded;
    welded.triangles.reserve(triangles.size());
    NumberTable vertexAt(std::min(vertices.size(), 3 * triangles.size()));
    for (const auto& triangle : triangles) {
        std::array<int, 3> corners{};
        for (std::size_t k = 0; k < 3; ++k) {
            const Eigen::Vector3d& vertex = vertices[static_cast<std::size_t>(triangle[k])];
            const auto bits = geometry::BitsOf(vertex);
            NumberTable::Number& number = vertexAt.At(geometry::HashOf(bits), [&](NumberTable::Number other) {
                return geometry::BitsOf(welded.vertices[other]) == bits;
            });
            if (number == NumberTable::none) {
                number = static_cast<NumberTable::Number>(welded.vertices.size());
                welded.vertices.push_back(vertex);
            }
            corners[k] = static_cast<int>(number);
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

bool Box::Contains(const Eigen::Vector3d& point) const {
    return (point.array() >= lower.array()).all() && (point.array() <= upper.array()).all();
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

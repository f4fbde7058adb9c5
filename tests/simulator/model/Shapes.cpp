#include "tests/simulator/model/Shapes.h"

#include "simulator/model/Text.h"

#include <cmath>

namespace shapes {

using namespace vantor::model;

Mesh Cube(double x, double edge) {
    Box box;
    box.Add({x, 0.0, 0.0});
    box.Add({x + edge, edge, edge});
    return BoxMesh(box);
}

std::string CubeObj(const std::string& name, const std::string& material, double x, double edge) {
    std::string text = "o " + name + "\nusemtl " + material + "\n";
    for (const auto& v : Cube(x, edge).vertices) {
        text += "v " + FormatNumber(v.x()) + " " + FormatNumber(v.y()) + " " + FormatNumber(v.z()) + "\n";
    }
    return text + "f -8 -6 -5 -7\nf -4 -3 -1 -2\nf -8 -7 -3 -4\nf -6 -2 -1 -5\nf -8 -4 -2 -6\nf -7 -5 -1 -3\n";
}

std::string CubeStl(const std::string& name, double x, double edge) {
    return StlText(name, Cube(x, edge));
}

namespace {

constexpr double pi = 3.14159265358979323846;

/// Adds a closed ring; its triangles look outward, or inward where it bounds a cavity.
void AddRing(Mesh& mesh, double ringRadius, double sectionRadius, int around, int across, bool isCavity) {
    const int first = static_cast<int>(mesh.vertices.size());
    const auto corner = [&](int i, int j) { return first + i % around * across + j % across; };
    for (int i = 0; i < around; ++i) {
        for (int j = 0; j < across; ++j) {
            const double a = 2 * pi * i / around, b = 2 * pi * j / across;
            const double radius = ringRadius + sectionRadius * std::cos(b);
            mesh.vertices.emplace_back(radius * std::cos(a), radius * std::sin(a), sectionRadius * std::sin(b));
        }
    }
    for (int i = 0; i < around; ++i) {
        for (int j = 0; j < across; ++j) {
            const int p = corner(i, j), q = corner(i + 1, j), r = corner(i + 1, j + 1), s = corner(i, j + 1);
            mesh.triangles.push_back(isCavity ? std::array<int, 3>{p, r, q} : std::array<int, 3>{p, q, r});
            mesh.triangles.push_back(isCavity ? std::array<int, 3>{p, s, r} : std::array<int, 3>{p, r, s});
        }
    }
}

double RingVolume(double ringRadius, double sectionRadius, int around, int across) {
    return around * std::sin(2 * pi / around) * ringRadius * across / 2 * std::sin(2 * pi / across) * sectionRadius *
           sectionRadius;
}

} // namespace

Mesh HollowRing(double ringRadius, double sectionRadius, int around, int across) {
    Mesh mesh;
    AddRing(mesh, ringRadius, sectionRadius, around, across, false);
    AddRing(mesh, ringRadius, sectionRadius / 2, around, across, true);
    return mesh;
}

double HollowRingVolume(double ringRadius, double sectionRadius, int around, int across) {
    return RingVolume(ringRadius, sectionRadius, around, across) -
           RingVolume(ringRadius, sectionRadius / 2, around, across);
}

std::string ObjText(const std::string& name, const Mesh& mesh) {
    std::string text = "o " + name + "\n";
    for (const auto& v : mesh.vertices) {
        text += "v " + FormatNumber(v.x()) + " " + FormatNumber(v.y()) + " " + FormatNumber(v.z()) + "\n";
    }
    for (const auto& t : mesh.triangles) {
        text +=
            "f " + std::to_string(t[0] + 1) + " " + std::to_string(t[1] + 1) + " " + std::to_string(t[2] + 1) + "\n";
    }
    return text;
}

std::string StlText(const std::string& name, const Mesh& mesh) {
    std::string text = "solid " + name + "\n";
    for (const auto& triangle : mesh.triangles) {
        text += " facet normal 0 0 0\n  outer loop\n";
        for (const int corner : triangle) {
            const auto& v = mesh.vertices[static_cast<std::size_t>(corner)];
            text += "   vertex " + FormatNumber(v.x()) + " " + FormatNumber(v.y()) + " " + FormatNumber(v.z()) + "\n";
        }
        text += "  endloop\n endfacet\n";
    }
    return text + "endsolid " + name + "\n";
}

} // namespace shapes

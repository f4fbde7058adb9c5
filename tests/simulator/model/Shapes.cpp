#include "tests/simulator/model/Shapes.h"

#include "simulator/model/Text.h"

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
    const Mesh cube = Cube(x, edge);
    std::string text = "solid " + name + "\n";
    for (const auto& triangle : cube.triangles) {
        text += " facet normal 0 0 0\n  outer loop\n";
        for (const int corner : triangle) {
            const auto& v = cube.vertices[static_cast<std::size_t>(corner)];
            text += "   vertex " + FormatNumber(v.x()) + " " + FormatNumber(v.y()) + " " + FormatNumber(v.z()) + "\n";
        }
        text += "  endloop\n endfacet\n";
    }
    return text + "endsolid " + name + "\n";
}

} // namespace shapes

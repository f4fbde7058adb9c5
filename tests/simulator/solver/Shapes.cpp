#include "tests/simulator/solver/Shapes.h"

#include "tests/simulator/solver/Constants.h"

#include <Eigen/Geometry>
#include <algorithm>
#include <cmath>
#include <map>

using Eigen::Vector3d;
using vantor::solver::TriangleMesh;

namespace shapes {
namespace {

using references::pi;

void AddQuad(TriangleMesh& mesh, int a, int b, int c, int d) {
    mesh.triangles.push_back({a, b, c});
    mesh.triangles.push_back({a, c, d});
}

} // namespace

Eigen::Matrix3d Turn(double angle, const Vector3d& axis) {
    return Eigen::AngleAxis<double>(angle, axis.normalized()).toRotationMatrix();
}

Block Cube(const Vector3d& centre, const Vector3d& magnetisation) {
    Block block;
    block.centre = centre;
    block.size = Vector3d::Constant(0.01);
    block.magnetisation = magnetisation;
    return block;
}

TriangleMesh MeshOf(const Block& block) {
    TriangleMesh mesh;
    for (int i = 0; i < 8; ++i) {
        const Vector3d half((i & 1) ? 0.5 : -0.5, (i & 2) ? 0.5 : -0.5, (i & 4) ? 0.5 : -0.5);
        mesh.vertices.push_back(block.centre + block.rotation * half.cwiseProduct(block.size));
    }
    AddQuad(mesh, 0, 2, 3, 1);
    AddQuad(mesh, 4, 5, 7, 6);
    AddQuad(mesh, 0, 1, 5, 4);
    AddQuad(mesh, 2, 6, 7, 3);
    AddQuad(mesh, 0, 4, 6, 2);
    AddQuad(mesh, 1, 3, 7, 5);
    return mesh;
}

TriangleMesh MeshOf(const Prism& prism) {
    TriangleMesh mesh;
    const bool hollow = prism.innerRadius > 0;
    for (int i = 0; i < prism.sides; ++i) {
        const double angle = 2 * pi * i / prism.sides;
        const Vector3d out(std::cos(angle), std::sin(angle), 0), up(0, 0, prism.height / 2);
        mesh.vertices.push_back(prism.centre + prism.radius * out - up);
        mesh.vertices.push_back(prism.centre + prism.radius * out + up);
        mesh.vertices.push_back(prism.centre + prism.innerRadius * out - up);
        mesh.vertices.push_back(prism.centre + prism.innerRadius * out + up);
    }
    for (int i = 0; i < prism.sides; ++i) {
        const int a = 4 * i, b = 4 * ((i + 1) % prism.sides);
        AddQuad(mesh, a, b, b + 1, a + 1);
        if (hollow) {
            AddQuad(mesh, a + 3, b + 3, b + 2, a + 2);
            AddQuad(mesh, a + 1, b + 1, b + 3, a + 3);
            AddQuad(mesh, a + 2, b + 2, b, a);
        } else { // all inner corners lie in the middle of the caps
            mesh.triangles.push_back({a + 1, b + 1, a + 3});
            mesh.triangles.push_back({a + 2, b, a});
        }
    }
    return mesh;
}

TriangleMesh Finer(const TriangleMesh& mesh, int times) {
    if (times == 0) {
        return mesh;
    }
    TriangleMesh result;
    result.vertices = mesh.vertices;
    std::map<std::pair<int, int>, int> middles;
    const auto middle = [&](int a, int b) {
        const auto [found, isNew] =
            middles.try_emplace({std::min(a, b), std::max(a, b)}, static_cast<int>(result.vertices.size()));
        if (isNew) {
            result.vertices.push_back(
                (mesh.vertices[static_cast<std::size_t>(a)] + mesh.vertices[static_cast<std::size_t>(b)]) / 2);
        }
        return found->second;
    };
    for (const auto& [a, b, c] : mesh.triangles) {
        const int ab = middle(a, b), bc = middle(b, c), ca = middle(c, a);
        result.triangles.push_back({a, ab, ca});
        result.triangles.push_back({ab, b, bc});
        result.triangles.push_back({ca, bc, c});
        result.triangles.push_back({ab, bc, ca});
    }
    return Finer(result, times - 1);
}

TriangleMesh Unshared(const TriangleMesh& mesh) {
    TriangleMesh result;
    for (const auto& triangle : mesh.triangles) {
        const int first = static_cast<int>(result.vertices.size());
        for (const int corner : triangle) {
            result.vertices.push_back(mesh.vertices[static_cast<std::size_t>(corner)]);
        }
        result.triangles.push_back({first, first + 1, first + 2});
    }
    return result;
}

TriangleMesh Ball(int times) {
    TriangleMesh mesh;
    mesh.vertices = {Vector3d::UnitX(),  Vector3d::UnitY(),  Vector3d::UnitZ(),
                     -Vector3d::UnitX(), -Vector3d::UnitY(), -Vector3d::UnitZ()};
    mesh.triangles = {{0, 1, 2}, {1, 3, 2}, {3, 4, 2}, {4, 0, 2}, {1, 0, 5}, {3, 1, 5}, {4, 3, 5}, {0, 4, 5}};
    for (int i = 0; i < times; ++i) {
        mesh = Finer(mesh, 1);
        for (Vector3d& vertex : mesh.vertices) {
            vertex.normalize();
        }
    }
    return mesh;
}

TriangleMesh& OwnMesh(vantor::solver::Magnet& magnet) {
    const auto mesh = std::make_shared<TriangleMesh>(*magnet.mesh);
    magnet.mesh = mesh;
    return *mesh;
}

std::vector<Block> CouplingHalf(int blocks, double angle, double height) {
    std::vector<Block> half;
    for (int i = 0; i < blocks; ++i) {
        Block block;
        block.rotation = Turn(angle + 2 * pi * i / blocks, Vector3d::UnitZ());
        block.centre = block.rotation * Vector3d(0.03, 0, 0) + Vector3d(0, 0, height);
        block.size = {0.015, 0.012, 0.010};
        block.magnetisation = Vector3d(0, 0, i % 2 == 0 ? 9e5 : -9e5);
        half.push_back(block);
    }
    return half;
}

vantor::solver::Body BodyOf(const std::string& name, const std::vector<Block>& blocks) {
    vantor::solver::Body body{name, {}};
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        body.magnets.push_back({name + "_" + std::to_string(i), Shared(MeshOf(blocks[i])), blocks[i].magnetisation});
    }
    return body;
}

} // namespace shapes

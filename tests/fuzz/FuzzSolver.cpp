// Magnets and iron of any tetrahedra, slivers and doubled ones among them, either have loads that are finite, add up to
// nothing and are the same with any number of threads, or a complaint.
#include "simulator/solver/Magnetostatics.h"
#include "tests/fuzz/InputBytes.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

using Eigen::Vector3d;
namespace solver = vantor::solver;

class Scene {
public:
    explicit Scene(InputBytes input) : m_input(input) {}

    std::vector<solver::Body> Bodies() {
        std::vector<solver::Body> bodies{{"first", {Magnet()}}, {"second", {Magnet()}}};
        solver::Magnet& second = bodies[1].magnets[0];
        second.pose.translate(0.002 * Coordinates());
        const Vector3d axis = Coordinates();
        if (!axis.isZero(0)) {
            second.pose.rotate(Eigen::AngleAxisd(0.1 * m_input.Byte(), axis.normalized()));
        }
        for (solver::Body& body : bodies) {
            SetPermeability(body.magnets[0]);
        }
        return bodies;
    }

private:
    double Coordinate() { return static_cast<double>(m_input.Byte()) - 128; }
    Vector3d Coordinates() {
        const double x = Coordinate(), y = Coordinate();
        return {x, y, Coordinate()};
    }

    /// Enough tetrahedra for trees of clusters.
    solver::Magnet Magnet() {
        const auto mesh = std::make_shared<solver::TriangleMesh>();
        solver::Magnet magnet{"magnet", mesh, 1e4 * Coordinates()};
        const unsigned count = m_input.Byte() % 48;
        for (unsigned i = 0; i < count; ++i) {
            AddTetrahedron(*mesh);
        }
        return magnet;
    }

    void SetPermeability(solver::Magnet& magnet) {
        const unsigned kind = m_input.Byte() % 16;
        if (kind == 0 || kind > 3) {
            return;
        }
        magnet.permeability = kind == 1 ? 1.05 : 1000;
        if (kind != 1) {
            magnet.magnetisation.setZero();
        }
        if (kind == 3) {
            magnet.curve = std::make_shared<solver::MagnetizationCurve>(
                solver::MagnetizationCurve{{{0, 0}, {100, 0.01 * m_input.Byte()}, {1e6, 4}}});
        }
        // Few faces: their charges are solved for, which takes longer.
        constexpr std::size_t fewTriangles = 4;
        auto mesh = *magnet.mesh;
        mesh.triangles.resize(std::min(mesh.triangles.size(), fewTriangles));
        magnet.mesh = std::make_shared<solver::TriangleMesh>(std::move(mesh));
    }

    void AddTetrahedron(solver::TriangleMesh& mesh) {
        const int first = static_cast<int>(mesh.vertices.size());
        // Corners on a coarse grid, so that many faces lie in one plane and on one another.
        const Vector3d corner = (0.0001 * Coordinates());
        mesh.vertices.push_back(corner);
        for (int i = 0; i < 3; ++i) {
            const unsigned byte = m_input.Byte();
            mesh.vertices.push_back(corner + 0.0005 * Vector3d(byte % 4, byte / 4 % 4, byte / 16 % 4));
        }
        const auto edge = [&](int i) -> Vector3d {
            return mesh.vertices[static_cast<std::size_t>(first + i)] - corner;
        };
        const bool turned = edge(1).cross(edge(2)).dot(edge(3)) < 0;
        const int b = first + (turned ? 2 : 1), c = first + (turned ? 1 : 2), d = first + 3;
        mesh.triangles.insert(mesh.triangles.end(), {{first, c, b}, {first, b, d}, {first, d, c}, {b, c, d}});
    }

    InputBytes m_input;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::vector<solver::Body> bodies = Scene(InputBytes(data, size)).Bodies();
    solver::Options options;
    options.percentError = 5;
    const auto isPermeable = [](const solver::Body& body) {
        return body.magnets[0].permeability != 1 || body.magnets[0].curve;
    };
    options.maximumPasses = std::any_of(bodies.begin(), bodies.end(), isPermeable) ? 1 : 3;
    options.threads = 1;
    try {
        const solver::Solution alone = Solve(bodies, options);
        options.threads = 2;
        const solver::Solution together = Solve(bodies, options);
        const solver::Load &first = alone.loads[0], &second = alone.loads[1];
        if (!first.force.allFinite() || !first.torque.allFinite() || !std::isfinite(first.forceError) ||
            (first.force + second.force).norm() > 1e-9 * first.forceScale || together.loads[0].force != first.force ||
            together.loads[0].torque != first.torque) {
            std::abort();
        }
    } catch (const solver::SolveError&) {
    }
    return 0;
}

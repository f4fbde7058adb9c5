#include "tests/simulator/solver/MeshCases.h"

#include "simulator/model/GeometryFile.h"
#include "tests/simulator/solver/Constants.h"

#include <algorithm>
#include <map>
#include <random>

using Eigen::Vector3d;
using vantor::solver::TriangleMesh;

namespace meshes {
namespace {

constexpr double millimetre = 1e-3;
using references::pi;
const Vector3d alongX(1.2, 0, 0), alongZ(0, 0, 1.2);

} // namespace

SharedMesh ReadFile(const std::filesystem::path& path) {
    vantor::model::Mesh read = vantor::model::ReadGeometryFile(path).solids.at(0).mesh;
    for (Vector3d& vertex : read.vertices) {
        vertex *= millimetre;
    }
    return shapes::Shared({std::move(read.vertices), std::move(read.triangles)});
}

SharedMesh Small(const std::string& name) {
    static std::map<std::string, SharedMesh> known;
    const auto [mesh, isNew] = known.try_emplace(name);
    if (isNew) {
        mesh->second = ReadFile(std::filesystem::path(KINORA_SOURCE_DIR) / "tests/meshes" / (name + "-2k.stl"));
    }
    return mesh->second;
}

SharedMesh Scaled(const SharedMesh& mesh, double factor) {
    TriangleMesh scaled = *mesh;
    for (Vector3d& vertex : scaled.vertices) {
        vertex *= factor;
    }
    return shapes::Shared(std::move(scaled));
}

SharedMesh Shuffled(const SharedMesh& mesh) {
    TriangleMesh shuffled = *mesh;
    std::shuffle(shuffled.triangles.begin(), shuffled.triangles.end(), std::mt19937(5));
    return shapes::Shared(std::move(shuffled));
}

Eigen::Isometry3d Place(const Vector3d& to, double degrees, const Vector3d& axis) {
    return Eigen::Translation3d(millimetre * to) * Eigen::AngleAxisd(degrees * pi / 180, axis.normalized());
}

vantor::solver::Body Body(const std::string& name, const SharedMesh& mesh, const Vector3d& remanence,
                          const Eigen::Isometry3d& pose) {
    return {name, {{name + "_magnet", mesh, remanence / vantor::solver::vacuumPermeability, pose}}};
}

std::vector<Case> Cases() {
    const SharedMesh ring = Small("ring"), ordered = Small("ring-ordered"), rotor = Small("rotor"),
                     block = Small("block"), smallBlock = Scaled(block, 0.4);
    const auto pair = [](const vantor::solver::Body& source, const vantor::solver::Body& target) {
        return std::vector<vantor::solver::Body>{source, target};
    };
    return {
        {"AxialRings",
         pair(Body("lower", ring, alongZ), Body("upper", ring, alongZ, Place({0.5, 0, 15}, 7))),
         {{-4.12746556, -0.00142909257, -89.6903156}, {0.00019172177, -0.00863710266, -2.05448608e-06}}},
        {"DiametralRings",
         pair(Body("lower", ring, alongX), Body("upper", ring, alongX, Place({0, 0, 15}, 30))),
         {{0.00317733316, 0.00143645285, 38.9465536}, {-8.02522235e-05, 9.4027136e-05, 0.195922951}}},
        {"AxialRingsAtAThinGap",
         pair(Body("lower", ring, alongZ), Body("upper", ordered, alongZ, Place({0, 0, 10.1}, 11))),
         {{-0.014724869, -0.00570229428, -292.819788}, {0.000329610924, -0.000248654557, 1.0223065e-05}}},
        {"DiametralRingsAtAThinGap",
         pair(Body("lower", ring, alongX), Body("upper", ring, alongX, Place({0, 0, 10.1}, 40))),
         {{0.0112681144, 0.00663231665, 112.207894}, {-0.000175972184, 0.000206031385, 0.504011533}}},
        {"RotorInARing",
         pair(Body("stator", ring, alongX), Body("rotor", rotor, alongX, Place({0, 0, 2}, 20))),
         {{-0.0621994232, 0.00141004929, -15.4547542}, {4.04425031e-05, -7.97101937e-05, -0.0649371767}}},
        {"RoundedBlockOverARing",
         pair(Body("ring", ring, alongZ), Body("block", block, alongZ, Place({4, 1, 12}, 3, {1, 2, 0}))),
         {{-1.74325993, 2.92774221, -20.9744243}, {-0.119321314, 0.451411984, -4.16001315e-05}}},
        {"MagnetInABore",
         pair(Body("ring", ordered, alongZ),
              Body("magnet", smallBlock, {0.8, 0, 0.9}, Place({1, 0.5, 3}, 15, {1, 0, 1}))),
         {{-4.547602, -0.356189801, 6.51025967}, {0.00989201768, 0.0333859939, 9.32317138e-11}}},
        {"RoundedBlocksAtAThinGap",
         pair(Body("lower", block, alongZ), Body("upper", block, alongZ, Place({3, 2, 10.1}))),
         {{-27.3911683, -33.6664743, -114.621184}, {0.0553260755, 0.0338479379, -0.0233877315}}},
    };
}

} // namespace meshes

// Bodies turned any way, through the library on the simulator: against one another, and against loads that this file
// finds itself, by Coulomb's law between the charged faces.
#include "coupling/KinoraVeltrixCoupling.h"
#include "interface/KinoraVeltrixOrientation.h"
#include "programs/Environment.h"
#include "tests/endtoend/Programs.h"

#include <Eigen/Geometry>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <random>

namespace endtoend {
namespace {

using Coupling = IKinoraVeltrixInterface;
using Vector = Eigen::Vector3d;
using Matrix = Eigen::Matrix3d;

constexpr double pi = 3.14159265358979323846;

/// A block magnet of 1 T. `turn` turns its edges away from the global axes.
struct Block {
    std::string name;
    Vector centre;
    Vector edges;
    /// Of magnetisation, along the edges.
    int axis;
    Matrix turn = Matrix::Identity();
};

/// The block as an object of a Wavefront OBJ file, after `corners` earlier corners.
std::string ObjText(const Block& block, int corners) {
    std::string text = "o " + block.name + "\n";
    for (int corner = 0; corner < 8; ++corner) {
        const Vector sides(corner & 1 ? 0.5 : -0.5, corner & 2 ? 0.5 : -0.5, corner & 4 ? 0.5 : -0.5);
        const Vector at = block.centre + block.turn * sides.cwiseProduct(block.edges);
        char line[100];
        std::snprintf(line, sizeof line, "v %.17g %.17g %.17g\n", at.x(), at.y(), at.z());
        text += line;
    }
    const int faces[6][4] = {{0, 4, 6, 2}, {1, 3, 7, 5}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 2, 3, 1}, {4, 5, 7, 6}};
    for (const auto& face : faces) {
        text += "f";
        for (const int corner : face) {
            text += " " + std::to_string(corners + corner + 1);
        }
        text += "\n";
    }
    return text;
}

void WriteObj(const std::filesystem::path& file, const std::vector<Block>& blocks) {
    std::ofstream stream(file, std::ios::binary);
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        stream << ObjText(blocks[i], 8 * static_cast<int>(i));
    }
}

struct Load {
    Vector force;
    /// About the body's origin, newton metres.
    Vector torque;
};

/// Where a body is: its origin, and the turn from its drawn pose.
struct Place {
    Vector origin;
    Matrix turn;
};

/// Two block magnets in the desktop, a body each with its origin in its block's centre; metres.
class Pair {
public:
    explicit Pair(const std::vector<Block>& blocks) {
        kinora::programs::SetEnvironmentValue("KINORA_VELTRIX_VTDK_VERSION", "Simulator");
        WriteObj(m_folder / "pair.obj", blocks);
        std::vector<Coupling::Group> groups;
        std::map<std::string, Coupling::Material> materials;
        for (const Block& block : blocks) {
            Coupling::Group group;
            group.transform.name = "body_" + block.name;
            Eigen::Map<Vector>(group.transform.translation) = block.centre; // and not turned
            group.objects = {block.name};
            Coupling::Material material{"magnet_1T", {}};
            Eigen::Map<Vector>(material.coercivityDirection) = block.turn.col(block.axis);
            materials[block.name] = material;
            m_transforms.push_back(group.transform);
            groups.push_back(group);
        }
        EXPECT_TRUE(
            m_coupling.CreateProject((m_folder / "pair.vtdk").u8string(), (m_folder / "pair.obj").u8string(), "meter"));
        EXPECT_TRUE(m_coupling.InitMagneticObjects(groups, materials));
    }

    ~Pair() { EXPECT_TRUE(m_coupling.QuitApplication()); }
    Pair(const Pair&) = delete;
    Pair& operator=(const Pair&) = delete;

    /// The loads on the bodies at these places, in global axes.
    std::vector<Load> Solve(const std::vector<Place>& places) {
        for (std::size_t body = 0; body < places.size(); ++body) {
            Eigen::Map<Vector>(m_transforms[body].translation) = places[body].origin;
            Eigen::Map<Matrix> rotation(m_transforms[body].rotation);
            rotation = places[body].turn; // its columns become rows
            KinoraVeltrixRotationFor(m_transforms[body].rotation, m_transforms[body].rotation);
        }
        std::vector<Coupling::Result> results;
        int status = 0;
        EXPECT_TRUE(m_coupling.Analyze(0.0, m_transforms, results, status));
        std::vector<Load> loads;
        for (std::size_t body = 0; body < results.size(); ++body) {
            loads.push_back({places[body].turn * Eigen::Map<const Vector>(results[body].force),
                             places[body].turn * Eigen::Map<const Vector>(results[body].torque) / 1000});
        }
        return loads;
    }

private:
    const ScratchFolder m_folder;
    CKinoraVeltrixCoupling m_coupling;
    std::vector<Coupling::Transform> m_transforms;
};

/// A point with a magnetic charge, weber.
struct Charge {
    Vector at;
    double charge;
};

/// The charged faces of a block at its place, by the Gauss rule of five points along each edge.
std::vector<Charge> ChargesOf(const Block& block, const Place& place) {
    const double points[] = {-0.906179845938664, -0.538469310105683, 0.0, 0.538469310105683, 0.906179845938664};
    const double weights[] = {0.236926885056189, 0.478628670499366, 0.568888888888889, 0.478628670499366,
                              0.236926885056189};
    const int u = (block.axis + 1) % 3, v = (block.axis + 2) % 3;
    std::vector<Charge> charges;
    for (const double side : {-1.0, 1.0}) {
        for (int i = 0; i < 5; ++i) {
            for (int j = 0; j < 5; ++j) {
                Vector own;
                own[block.axis] = side;
                own[u] = points[i];
                own[v] = points[j];
                const Vector arm = place.turn * (block.turn * own.cwiseProduct(block.edges) / 2);
                const double share = block.edges[u] * block.edges[v] / 4 * weights[i] * weights[j];
                charges.push_back({place.origin + arm, side * share}); // 1 T
            }
        }
    }
    return charges;
}

/// Coulomb's law for magnetic charges.
Load ReferenceLoad(const std::vector<Charge>& sources, const std::vector<Charge>& targets, const Vector& origin) {
    const double mu0 = 4e-7 * pi;
    Load load{Vector::Zero(), Vector::Zero()};
    for (const Charge& target : targets) {
        Vector force = Vector::Zero();
        for (const Charge& source : sources) {
            const Vector way = target.at - source.at;
            force += target.charge * source.charge / (4 * pi * mu0 * std::pow(way.norm(), 3)) * way;
        }
        load.force += force;
        load.torque += (target.at - origin).cross(force);
    }
    return load;
}

/// Turns from every direction, after the 24 that lay axes along axes.
std::vector<Matrix> Turns(int randomOnes) {
    std::vector<Matrix> turns;
    for (const Vector& z :
         {Vector(0, 0, 1), Vector(0, 0, -1), Vector(0, 1, 0), Vector(0, -1, 0), Vector(1, 0, 0), Vector(-1, 0, 0)}) {
        Vector x(z.y(), z.z(), z.x());
        for (int quarter = 0; quarter < 4; ++quarter, x = z.cross(x).eval()) {
            turns.push_back((Matrix() << x, z.cross(x), z).finished());
        }
    }
    std::mt19937_64 random(20);
    std::normal_distribution<double> normal;
    for (int i = 0; i < randomOnes; ++i) {
        const double w = normal(random), x = normal(random), y = normal(random), z = normal(random);
        turns.push_back(Eigen::Quaterniond(w, x, y, z).normalized().toRotationMatrix());
    }
    return turns;
}

/// Six decimals of three angles take some millionths from a load, and more from a small torque; the solver loses less
/// at these distances.
void ExpectLoad(const Load& load, const Load& expected) {
    constexpr double tolerance = 2e-5;
    EXPECT_LE((load.force - expected.force).norm(), tolerance * expected.force.norm())
        << load.force.transpose() << " instead of " << expected.force.transpose();
    EXPECT_LE((load.torque - expected.torque).norm(), tolerance * expected.torque.norm())
        << load.torque.transpose() << " instead of " << expected.torque.transpose();
}

/// A metre long and metres apart: what six decimals of a metre take from the positions does not show.
const std::vector<Block> magnets = {{"first", {0.3, 0.0, -0.2}, {1.0, 0.8, 0.6}, 2},
                                    {"second", {1.4, 1.1, 1.5}, {0.7, 0.9, 0.5}, 0}};

TEST(Orientation, TurningEverythingTurnsTheLoads) {
    Pair pair(magnets);
    const Matrix identity = Matrix::Identity();
    const std::vector<Load> straight = pair.Solve({{magnets[0].centre, identity}, {magnets[1].centre, identity}});
    for (const Matrix& turn : Turns(40)) {
        const auto loads = pair.Solve({{turn * magnets[0].centre, turn}, {turn * magnets[1].centre, turn}});
        for (std::size_t body = 0; body < 2; ++body) {
            SCOPED_TRACE(turn);
            ExpectLoad(loads[body], {turn * straight[body].force, turn * straight[body].torque});
        }
    }
}

TEST(Orientation, OfOneMagnetGivesTheLoadsOfCoulombsLaw) {
    Pair pair(magnets);
    for (const Matrix& turn : Turns(40)) {
        const Place still{magnets[0].centre, Matrix::Identity()};
        const Place turned{magnets[1].centre, turn};
        const auto loads = pair.Solve({still, turned});
        const auto first = ChargesOf(magnets[0], still);
        const auto second = ChargesOf(magnets[1], turned);
        SCOPED_TRACE(turn);
        ExpectLoad(loads[0], ReferenceLoad(second, first, still.origin));
        ExpectLoad(loads[1], ReferenceLoad(first, second, turned.origin));
    }
}

TEST(Orientation, OfGeometryDrawnAtAnAngleIsTurnedFromThere) {
    std::vector<Block> drawn = magnets;
    drawn[0].turn = Eigen::AngleAxisd(0.9, Vector(2, -1, 2) / 3).toRotationMatrix();
    drawn[1].turn = Eigen::AngleAxisd(-2.0, Vector(2, 3, -6) / 7).toRotationMatrix();
    Pair pair(drawn);
    for (const Matrix& turn : Turns(10)) {
        const Place first{drawn[0].centre, turn.transpose()};
        const Place second{drawn[1].centre, turn};
        const auto loads = pair.Solve({first, second});
        SCOPED_TRACE(turn);
        ExpectLoad(loads[0], ReferenceLoad(ChargesOf(drawn[1], second), ChargesOf(drawn[0], first), first.origin));
        ExpectLoad(loads[1], ReferenceLoad(ChargesOf(drawn[0], first), ChargesOf(drawn[1], second), second.origin));
    }
}

/// How kinora-run ended, and the states that it wrote.
struct HostRun {
    Outcome outcome;
    std::filesystem::path states;
};

/// Runs kinora-run with the first magnet standing still and the second one swinging freely about a skew axis.
/// @param rotation      the second body's orientation as it is drawn, a member of the scenario; may be empty
/// @param startDegrees  how far it is turned from there in the beginning
HostRun RunScenario(const ScratchFolder& folder, const std::string& name, const std::vector<Block>& blocks,
                    const std::string& rotation, int startDegrees) {
    const std::filesystem::path scenario = folder / (name + ".json");
    const std::filesystem::path out = folder / name;
    WriteObj(folder / (name + ".obj"), blocks);
    std::ofstream(scenario) << R"({ "desktop": { "version": "Simulator" }, "project": { "file": "pair.vantor" },)"
                            << R"("geometry": { "units": "meter", "file": ")" << name << R"(.obj" },)"
                            << R"("materials": { "first": { "name": "magnet_1T", "direction": [0, 0, 1] },
                             "second": { "name": "magnet_1T", "direction": [1, 0, 0] } },
              "bodies": [ { "name": "still", "objects": ["first"], "position": [0.3, 0, -0.2] },
                          { "name": "swinging", "objects": ["second"], "position": [1.4, 1.1, 1.5],)"
                            << rotation << R"("mass": 100, "inertia": [10, 10, 10] } ],
              "joints": [ { "name": "hinge", "type": "hinge", "axis": [2, 3, -6], "point": [1.4, 1.1, 1.5],
                            "bodies": ["swinging"], "free": { "start": ")"
                            << startDegrees << R"(*deg" } } ],
              "solver": { "step": 0.01, "end": 0.4 }, "output": { "csv": "states.csv" } })";
    return {RunHost({scenario.u8string(), "--out", out.u8string(), "--quiet"}), out / "states.csv"};
}

TEST(Orientation, OfADrawingDoesNotMatterToTheHost) {
    const ScratchFolder folder;
    const HostRun straight = RunScenario(folder, "straight", magnets, "", 40);
    ASSERT_EQ(straight.outcome.exitCode, 0) << straight.outcome.output;
    std::vector<Block> blocks = magnets;
    blocks[1].turn = Eigen::AngleAxisd(40 * pi / 180, Vector(2, 3, -6) / 7).toRotationMatrix();
    const HostRun drawn =
        RunScenario(folder, "drawn", blocks, R"("rotation": { "axis": [2, 3, -6], "angle": "40*deg" },)", 0);
    ASSERT_EQ(drawn.outcome.exitCode, 0) << drawn.outcome.output;
    for (const char* column :
         {"swinging.Force_x [N]", "swinging.Force_y [N]", "swinging.Force_z [N]", "swinging.Torque_x [mN m]",
          "swinging.Torque_y [mN m]", "swinging.Torque_z [mN m]", "still.Torque_x [mN m]", "hinge.Speed [rad/s]"}) {
        SCOPED_TRACE(column);
        ExpectNear(Column(drawn.states, column), Column(straight.states, column), 1e-5);
    }
    std::vector<double> coordinates = Column(drawn.states, "hinge.Coordinate [rad]");
    for (double& coordinate : coordinates) {
        coordinate += 40 * pi / 180;
    }
    ExpectNear(coordinates, Column(straight.states, "hinge.Coordinate [rad]"), 1e-6);
    EXPECT_GE(std::fabs(coordinates.back() - coordinates.front()), 0.5) << "nothing moved";
}

TEST(Orientation, OfTheTiltedMagnetsGivesEveryLoadThatWasExpected) {
    const ScratchFolder folder;
    const std::filesystem::path example = Examples() / "tilted-magnets";
    const Outcome outcome =
        RunHost({(example / "scenario.json").u8string(), "--out", folder.Path().u8string(), "--quiet"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.output;
    for (const char* column :
         {"left.Force_x [N]", "left.Force_y [N]", "left.Force_z [N]", "left.Torque_x [mN m]", "left.Torque_y [mN m]",
          "left.Torque_z [mN m]", "right.Force_x [N]", "right.Force_y [N]", "right.Force_z [N]",
          "right.Torque_x [mN m]", "right.Torque_y [mN m]", "right.Torque_z [mN m]"}) {
        SCOPED_TRACE(column);
        ExpectNear(Column(folder / "states.csv", column), Column(example / "scenario.expected.csv", column), 2e-4);
    }
}

} // namespace
} // namespace endtoend

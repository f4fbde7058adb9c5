// Every template of kinora-run --new runs as it is written, by its script, and gives what Coulomb's law between the
// charged faces of its magnets says.
#include "tests/endtoend/Programs.h"

#include <Eigen/Geometry>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>

namespace endtoend {
namespace {

using Vector = Eigen::Vector3d;
using Points = std::vector<Vector>;

constexpr double pi = 3.14159265358979323846;
constexpr double mm = 0.001;
constexpr double gravity = 9.80665;
/// 1 / (4 pi mu0), metres per henry.
constexpr double coulomb = 1e7 / (16.0 * pi * pi);

/// A magnetic charge in webers at a place.
struct Charge {
    Vector place;
    double weber;
};
using Charges = std::vector<Charge>;

/// How many cells a face is cut in, along its first side and along its second.
struct Cells {
    int u;
    int v;
};

/// Spreads the charge of a face by Gauss's rule of three points along both sides of each cell.
void AddFace(Charges& charges, const std::array<Vector, 4>& corners, Cells cells, double tesla) {
    constexpr std::array<double, 3> places = {-0.774596669241483, 0.0, 0.774596669241483};
    constexpr std::array<double, 3> weights = {5.0 / 18.0, 8.0 / 18.0, 5.0 / 18.0};
    const auto& [a, b, c, d] = corners;
    for (int i = 0; i < 3 * cells.u; ++i) {
        for (int j = 0; j < 3 * cells.v; ++j) {
            const auto iPoint = static_cast<std::size_t>(i % 3);
            const auto jPoint = static_cast<std::size_t>(j % 3);
            const double u = (i / 3 + 0.5 + 0.5 * places[iPoint]) / cells.u;
            const double v = (j / 3 + 0.5 + 0.5 * places[jPoint]) / cells.v;
            const Vector alongU = (1 - v) * (b - a) + v * (c - d);
            const Vector alongV = (1 - u) * (d - a) + u * (c - b);
            const double share = weights[iPoint] * weights[jPoint] / (cells.u * cells.v);
            charges.push_back({(1 - v) * ((1 - u) * a + u * b) + v * ((1 - u) * d + u * c),
                               tesla * share * alongU.cross(alongV).norm()});
        }
    }
}

/// Both charged faces of a magnet along z, of which four corners below are given.
void AddMagnet(Charges& charges, const std::array<Vector, 4>& below, double height, Cells cells, double tesla) {
    std::array<Vector, 4> above = below;
    for (Vector& corner : above) {
        corner.z() += height;
    }
    AddFace(charges, below, cells, -tesla);
    AddFace(charges, above, cells, tesla);
}

Charges Cube(const Vector& middle, double tesla) {
    constexpr double half = 5 * mm;
    Charges charges;
    AddMagnet(charges,
              {middle + Vector(-half, -half, -half), middle + Vector(half, -half, -half),
               middle + Vector(half, half, -half), middle + Vector(-half, half, -half)},
              2 * half, {3, 3}, tesla);
    return charges;
}

/// The pieces between the corners of a polygon about z, millimetres, from one angle to another.
void AddArc(Charges& charges, double inner, double outer, double bottom, double from, double to, int sides,
            double tesla) {
    const auto corner = [&](double radius, int i) {
        const double angle = from + (to - from) * i / sides;
        return Vector(radius * mm * std::cos(angle), radius * mm * std::sin(angle), bottom * mm);
    };
    for (int i = 0; i < sides; ++i) {
        AddMagnet(charges, {corner(inner, i), corner(outer, i), corner(outer, i + 1), corner(inner, i + 1)}, 6 * mm,
                  {4, 1}, tesla);
    }
}

/// Six poles of 54 degrees.
Charges Disc(double bottom, double turn) {
    Charges charges;
    for (int pole = 0; pole < 6; ++pole) {
        const double middle = pole * pi / 3.0 + turn;
        AddArc(charges, 10, 25, bottom, middle - 0.15 * pi, middle + 0.15 * pi, 6, pole % 2 == 0 ? 1.0 : -1.0);
    }
    return charges;
}

Charges Ring(double inner, double outer, const Vector& shift) {
    Charges charges;
    AddArc(charges, inner, outer, -3, 0, 2 * pi, 24, 1.0);
    for (Charge& charge : charges) {
        charge.place += shift;
    }
    return charges;
}

struct Load {
    Vector force = Vector::Zero();
    /// About the origin.
    Vector torque = Vector::Zero();
};

Load LoadOn(const Charges& charges, const Charges& others) {
    Load load;
    for (const Charge& charge : charges) {
        Vector field = Vector::Zero();
        for (const Charge& other : others) {
            const Vector way = charge.place - other.place;
            field += other.weber / (way.squaredNorm() * way.norm()) * way;
        }
        const Vector force = coulomb * charge.weber * field;
        load.force += force;
        load.torque += charge.place.cross(force);
    }
    return load;
}

double EnergyBetween(const Charges& some, const Charges& others) {
    double energy = 0.0;
    for (const Charge& charge : some) {
        for (const Charge& other : others) {
            energy += coulomb * charge.weber * other.weber / (charge.place - other.place).norm();
        }
    }
    return energy;
}

class Template : public testing::Test {
protected:
    void SetUp() override {
        if (std::getenv("KINORA_EXAMPLE_STEPS")) {
            GTEST_SKIP() << "they are run whole elsewhere";
        }
    }

    /// Makes a project and runs it.
    /// @return the file of its states
    std::filesystem::path States(const std::string& name) {
        const std::filesystem::path project = m_folder.Path() / std::filesystem::u8path("my pr\u00f6ject");
        const Outcome made = RunHost({"--new", project.u8string(), "--template", name});
        EXPECT_EQ(made.exitCode, 0) << made.output;
#ifdef _WIN32
        const Outcome run = RunHost({(project / "scenario.json").u8string(), "--quiet"});
#else
        const Outcome run = RunProgram(project / "run.sh", {"--quiet"});
#endif
        EXPECT_EQ(run.exitCode, 0) << run.output;
        return project / "output" / (name + ".states.csv");
    }

    ScratchFolder m_folder;
};

TEST_F(Template, CouplingHasTheTorqueOfItsCharges) {
    const std::filesystem::path states = States("coupling");
    const std::vector<double> torques = Column(states, "driven.Torque_z [mN m]");
    const std::vector<double> forces = Column(states, "driven.Force_z [N]");
    ASSERT_EQ(torques.size(), 25U);
    const Charges driver = Disc(-8, 0);
    for (const std::size_t step : {0U, 6U, 17U}) {
        const Load load = LoadOn(Disc(2, static_cast<double>(step) * pi / 36.0), driver);
        EXPECT_NEAR(torques[step], 1000.0 * load.torque.z(), 2.0) << step; // of 1800
        EXPECT_NEAR(forces[step], load.force.z(), 0.2) << step;            // of 150
    }
    // Symmetry: the greatest torque half-way between the poles, none where they face each other.
    EXPECT_EQ(std::max_element(torques.begin(), torques.end()) - torques.begin(), 18);
}

TEST_F(Template, SpringSwingsAsStiffAsItsCharges) {
    const std::vector<double> way = Column(States("spring"), "carriage.Coordinate [m]");
    ASSERT_EQ(way.size(), 101U);
    Charges fixed = Cube({0, 0, -20 * mm}, -1);
    const Charges top = Cube({0, 0, 20 * mm}, -1);
    fixed.insert(fixed.end(), top.begin(), top.end());
    const double force = LoadOn(Cube({0, 0, 0.1 * mm}, 1), fixed).force.z();
    const double period = 2 * pi * std::sqrt(0.0075 / (-force / (0.1 * mm)));
    std::vector<double> zeros;
    for (std::size_t i = 1; i < way.size(); ++i) {
        if (way[i - 1] * way[i] < 0.0) {
            zeros.push_back(0.0005 * (static_cast<double>(i) - way[i] / (way[i] - way[i - 1])));
        }
    }
    ASSERT_GE(zeros.size(), 5U);
    EXPECT_NEAR((zeros[4] - zeros[0]) / 2.0, period, 0.005 * period);
    // Nothing brakes it.
    EXPECT_NEAR(*std::min_element(way.begin(), way.end()), -0.5 * mm, 0.01 * mm);
}

TEST_F(Template, BearingCarriesTheWeight) {
    const std::vector<double> way = Column(States("bearing"), "rise.Coordinate [m]");
    ASSERT_EQ(way.size(), 101U);
    const Load load = LoadOn(Ring(4, 9, {0, way.back(), 0}), Ring(14, 20, {0, 0, 0}));
    EXPECT_NEAR(load.force.y(), 0.1 * gravity, 0.005 * gravity * 0.1);
}

TEST_F(Template, FreeBodyGetsItsEnergyFromTheField) {
    const std::filesystem::path states = States("free");
    const auto last = [&](const char* column) { return Column(states, std::string("flight.") + column).back(); };
    const Charges fixed = Cube({0, 0, 0}, 1);
    const Vector drawn(2 * mm, 0, 16 * mm);
    const Charges before = Cube(drawn, -1);
    const Vector way(last("Displacement x [m]"), last("Displacement y [m]"), last("Displacement z [m]"));
    // About one axis, so that it is a turn by this angle.
    const Vector turned(last("Turn x [rad]"), last("Turn y [rad]"), last("Turn z [rad]"));
    const Eigen::AngleAxisd turn(turned.norm(), turned.normalized());
    Charges after = before;
    for (Charge& charge : after) {
        charge.place = drawn + way + turn * (charge.place - drawn);
    }
    const double given = EnergyBetween(before, fixed) - EnergyBetween(after, fixed);
    EXPECT_NEAR(last("Kinetic [J]"), given, 0.003 * given);
    EXPECT_GT(way.z(), 20 * mm);
}

TEST_F(Template, GeometryOfItsOwnIsSuggestedAsItIsPrinted) {
    std::filesystem::copy_file(Examples() / "magnetic-spring" / "magnetic-spring.obj", m_folder / "part.obj");
    const Outcome printed = RunHost({(m_folder / "part.obj").u8string()});
    ASSERT_EQ(printed.exitCode, 0) << printed.output;
    std::ofstream(m_folder / "printed.json", std::ios::binary) << printed.output;
    const Outcome checked = RunHost({(m_folder / "printed.json").u8string(), "--dry-run"});
    EXPECT_EQ(checked.exitCode, 0) << checked.output;
    EXPECT_EQ(checked.output.find("warning"), std::string::npos) << checked.output;
    // The project around it runs at once.
    const std::filesystem::path project = m_folder / "project";
    ASSERT_EQ(RunHost({(m_folder / "part.obj").u8string(), "--new", project.u8string()}).exitCode, 0);
    ASSERT_EQ(RunHost({(project / "scenario.json").u8string(), "--quiet"}).exitCode, 0);
    // All three magnets point up: the outer ones pull at each other and at the middle one.
    const double pull = LoadOn(Cube({0, 0, -20 * mm}, 1), Cube({0, 0, 0}, 1)).force.z() +
                        LoadOn(Cube({0, 0, -20 * mm}, 1), Cube({0, 0, 20 * mm}, 1)).force.z();
    EXPECT_NEAR(Column(project / "output" / "part.states.csv", "bottom_magnet.Force_z [N]").back(), pull, 1e-3 * pull);
}

TEST_F(Template, IsRefusedWhereFilesAre) {
    const std::string folder = m_folder.Path().u8string();
    ASSERT_EQ(RunHost({"--new", folder}).exitCode, 0);
    const Outcome again = RunHost({"--new", folder});
    EXPECT_EQ(again.exitCode, 2);
    EXPECT_NE(again.output.find("scenario.json: the file is there already"), std::string::npos) << again.output;
    EXPECT_EQ(RunHost({"--new", folder + "/other", "--template", "none"}).exitCode, 2);
    EXPECT_EQ(RunHost({(m_folder / "nowhere.obj").u8string()}).exitCode, 2);
}

} // namespace
} // namespace endtoend

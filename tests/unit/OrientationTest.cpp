// Orientations all the way: through the rotation that a host hands over, the library's angles and their texts, and the
// desktop's frame, back to the axes that were wanted.
#include "comutils/Pose.h"
#include "interface/KinoraVeltrixOrientation.h"

#include <Eigen/Geometry>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace {

/// Rows are axes, in the order in which the numbers are handed over.
using Axes = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;
using Transform = IKinoraVeltrixInterface::Transform;

constexpr double pi = 3.14159265358979323846;
/// Of each of the three angles six decimals may take half a unit.
constexpr double sixDecimals = 1.5e-6;

Transform TransformFor(const Axes& axes) {
    Transform transform;
    transform.name = "R";
    double numbers[9];
    std::copy_n(axes.data(), 9, numbers);
    KinoraVeltrixRotationFor(numbers, transform.rotation);
    return transform;
}

Axes MatrixOf(const Transform& transform) {
    return Eigen::Map<const Axes>(transform.rotation);
}

Axes Rx(double angle) {
    const double c = std::cos(angle), s = std::sin(angle);
    return (Axes() << 1, 0, 0, 0, c, -s, 0, s, c).finished();
}
Axes Ry(double angle) {
    const double c = std::cos(angle), s = std::sin(angle);
    return (Axes() << c, 0, s, 0, 1, 0, -s, 0, c).finished();
}
Axes Rz(double angle) {
    const double c = std::cos(angle), s = std::sin(angle);
    return (Axes() << c, -s, 0, s, c, 0, 0, 0, 1).finished();
}

/// The coordinate system's expressions, with the six variables' values; its z axis is x cross y.
Axes DesktopFrame(double P, double T, double S) {
    using std::cos;
    using std::sin;
    const Eigen::Vector3d x(cos(P) * cos(T), sin(S) * sin(P) * cos(T) - cos(S) * sin(T),
                            cos(S) * sin(P) * cos(T) + sin(S) * sin(T));
    const Eigen::Vector3d y(cos(P) * sin(T), sin(S) * sin(P) * sin(T) + cos(S) * cos(T),
                            cos(S) * sin(P) * sin(T) - sin(S) * cos(T));
    Axes axes;
    axes << x.transpose(), y.transpose(), x.cross(y).transpose();
    return axes;
}

double AsText(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6f", value);
    return std::strtod(text, nullptr);
}

/// What the desktop makes of the numbers, by the rule of docs/conventions.md written out here.
Axes FrameByTheRule(const Transform& transform) {
    const double* m = transform.rotation;
    if (m[0] == 0.0 && m[3] == 0.0) {
        return DesktopFrame(0.0, AsText(pi / 2), AsText(std::atan2(m[1], m[4])));
    }
    return DesktopFrame(AsText(std::atan2(m[3], m[0])), AsText(std::asin(std::fmax(-1.0, std::fmin(1.0, -m[6])))),
                        AsText(std::atan2(m[7], m[8])));
}

/// What it makes of them by the library's own texts.
Axes FrameByTheLibrary(const Transform& transform) {
    const auto variables = Pose::Variables(transform); // _Phi, _Psi, _Theta first
    return DesktopFrame(std::strtod(variables[0].second.c_str(), nullptr),
                        std::strtod(variables[2].second.c_str(), nullptr),
                        std::strtod(variables[1].second.c_str(), nullptr));
}

/// What it would make of the library's angles with all their decimals.
Axes FrameWithoutTexts(const Transform& transform) {
    const Pose::Angles angles = Pose::AnglesOf(transform.rotation);
    return DesktopFrame(angles.phi, angles.theta, angles.psi);
}

/// Largest distance between the tips of two axes.
double Distance(const Axes& one, const Axes& other) {
    return (one - other).rowwise().norm().maxCoeff();
}

void ExpectArrives(const Axes& axes) {
    const Transform transform = TransformFor(axes);
    const Axes rotation = MatrixOf(transform);
    ASSERT_LE((rotation * rotation.transpose() - Axes::Identity()).norm(), 2e-15) << axes;
    ASSERT_LE(Distance(FrameWithoutTexts(transform), axes), 3e-8) << axes;
    ASSERT_LE(Distance(FrameByTheRule(transform), axes), sixDecimals) << axes;
    ASSERT_LE(Distance(FrameByTheLibrary(transform), axes), sixDecimals) << axes;
}

/// Axes that an array of numbers given row by row has.
Axes Rows(std::initializer_list<double> numbers) {
    Axes axes;
    std::copy(numbers.begin(), numbers.end(), axes.data());
    return axes;
}

std::vector<Axes> RandomAxes(int count) {
    std::mt19937_64 random(20);
    std::normal_distribution<double> normal;
    std::vector<Axes> all;
    while (static_cast<int>(all.size()) < count) {
        const double w = normal(random), x = normal(random), y = normal(random), z = normal(random);
        all.emplace_back(Eigen::Quaterniond(w, x, y, z).normalized().toRotationMatrix());
    }
    return all;
}

/// Right angles, and angles beside them at all distances.
std::vector<double> AnglesAtRightAngles() {
    std::vector<double> angles;
    for (int quarter = -2; quarter <= 2; ++quarter) {
        angles.push_back(quarter * pi / 2);
        for (int exponent = -17; exponent <= -1; exponent += 2) {
            angles.push_back(quarter * pi / 2 + std::pow(10.0, exponent));
            angles.push_back(quarter * pi / 2 - std::pow(10.0, exponent));
        }
    }
    return angles;
}

} // namespace

TEST(Orientation, ArrivesFromEveryDirection) {
    for (const Axes& axes : RandomAxes(100'000)) {
        ExpectArrives(axes);
        ASSERT_FALSE(HasFatalFailure());
        // Far from right angles nothing but roundings is lost.
        if (std::fabs(axes(0, 0)) > 0.01) {
            ASSERT_LE(Distance(FrameWithoutTexts(TransformFor(axes)), axes), 1e-13) << axes;
        }
    }
}

TEST(Orientation, ArrivesWhereAxesLieAlongAxes) {
    int count = 0;
    for (const int x : {0, 1, 2}) {
        for (const int step : {1, 2}) {
            for (int signs = 0; signs < 4; ++signs) {
                for (const double zero : {0.0, -0.0}) {
                    Axes axes = Axes::Constant(zero);
                    axes(0, x) = signs & 1 ? -1.0 : 1.0;
                    axes(1, (x + step) % 3) = signs & 2 ? -1.0 : 1.0;
                    const Eigen::Vector3d z = axes.row(0).cross(axes.row(1));
                    const int at = (x + 2 * step) % 3;
                    axes(2, at) = z[at];
                    ExpectArrives(axes);
                    ++count;
                }
            }
        }
    }
    EXPECT_EQ(count, 2 * 24);
}

TEST(Orientation, ArrivesAtAndBesideThePolesOfBothRules) {
    const std::vector<double> angles = AnglesAtRightAngles();
    for (const double first : angles) {
        for (const double second : angles) {
            for (const double third : {0.0, -2.1, pi / 2}) {
                ExpectArrives(Rz(first) * Ry(second) * Rx(third)); // as the desktop's frame is taken apart
                ExpectArrives(Rz(third) * Ry(first) * Rx(second));
                ExpectArrives(Rx(second) * Ry(first) * Rz(third)); // as many hosts turn
                ASSERT_FALSE(HasFatalFailure()) << first << ' ' << second << ' ' << third;
            }
        }
    }
}

TEST(Orientation, ArrivesBesideEveryAxisPermutation) {
    // Elements that ought to be zero and are rounding of either sign.
    for (const double noise : {1e-300, 1e-30, 6e-17, 1e-12}) {
        for (int signs = 0; signs < 16; ++signs) {
            const auto sign = [&](int bit) { return signs >> bit & 1 ? -noise : noise; };
            ExpectArrives(Rows({sign(0), 1, sign(1), -1, sign(2), 0, sign(3), 0, 1}));
            ExpectArrives(Rows({sign(0), sign(1), -1, sign(2), 1, 0, 1, sign(3), 0}));
            ExpectArrives(Rows({sign(0), sign(1), 1, sign(2), -1, 0, 1, 0, sign(3)}));
            ExpectArrives(Rows({-1, sign(0), 0, sign(1), -1, 0, sign(2), sign(3), 1}));
            ASSERT_FALSE(HasFatalFailure()) << noise << ' ' << signs;
        }
    }
}

TEST(Orientation, KeepsTinyTurns) {
    for (int exponent = -300; exponent <= -1; ++exponent) {
        for (const double angle : {std::pow(10.0, exponent), -std::pow(10.0, exponent)}) {
            for (const Axes& axes : {Rx(angle), Ry(angle), Rz(angle)}) {
                ExpectArrives(axes);
                ASSERT_LE(Distance(FrameWithoutTexts(TransformFor(axes)), axes), 2e-16 + 1e-15 * std::fabs(angle));
            }
        }
    }
    // Turns about Y and Z change places; so small ones are exact in the variables' places, too.
    EXPECT_EQ(Pose::AnglesOf(TransformFor(Rz(1e-200)).rotation).theta, 1e-200);
    EXPECT_EQ(Pose::AnglesOf(TransformFor(Ry(1e-200)).rotation).phi, 1e-200);
}

TEST(Orientation, OfABodyThatIsNotTurnedHasAnglesWithoutASign) {
    for (const double zero : {0.0, -0.0}) {
        Axes axes = Axes::Constant(zero);
        axes.diagonal().setOnes();
        const Transform transform = TransformFor(axes);
        EXPECT_EQ(MatrixOf(transform), Axes::Identity());
        const auto variables = Pose::Variables(transform);
        for (const std::size_t angle : {0U, 1U, 2U}) {
            EXPECT_EQ(variables[angle].second, "0.000000Rad") << variables[angle].first;
        }
    }
}

TEST(Orientation, OfATurnAboutXIsHandedOverAsItIs) {
    for (int degrees = -180; degrees <= 180; ++degrees) {
        const Axes axes = Rx(degrees * pi / 180);
        EXPECT_LE((MatrixOf(TransformFor(axes)) - axes).norm(), 1e-15) << degrees;
    }
}

TEST(Orientation, OfAQuarterTurnAboutZIsATheta) {
    // The body's x axis points along y, its y axis along -x.
    const auto variables = Pose::Variables(TransformFor(Rows({0, 1, 0, -1, 0, 0, 0, 0, 1})));
    EXPECT_EQ(variables[0], Pose::Variable("R_Phi", "0.000000Rad"));
    EXPECT_EQ(variables[1], Pose::Variable("R_Psi", "0.000000Rad"));
    EXPECT_EQ(variables[2], Pose::Variable("R_Theta", "-1.570796Rad"));
}

/// docs/conventions.md shows it: 30 degrees about X, then 60 degrees about Z.
TEST(Orientation, OfTheExampleArrives) {
    const Axes axes = (Rz(pi / 3) * Rx(pi / 6)).transpose();
    const Transform transform = TransformFor(axes);
    const Axes expected =
        Rows({0.500000, 0.624038, -0.600481, -0.240192, 0.766099, 0.596154, 0.832050, -0.153846, 0.532939});
    EXPECT_LE((MatrixOf(transform) - expected).cwiseAbs().maxCoeff(), 5e-7);
    const auto variables = Pose::Variables(transform);
    EXPECT_EQ(variables[0], Pose::Variable("R_Phi", "-0.447832Rad"));
    EXPECT_EQ(variables[1], Pose::Variable("R_Psi", "-0.281035Rad"));
    EXPECT_EQ(variables[2], Pose::Variable("R_Theta", "-0.982794Rad"));
    ExpectArrives(axes);
    // The axes themselves, handed over, arrive 43.1 degrees away.
    Transform itself = transform;
    std::copy_n(axes.data(), 9, itself.rotation);
    const Eigen::Matrix3d between = FrameWithoutTexts(itself) * axes.transpose();
    EXPECT_NEAR(Eigen::AngleAxisd(between).angle() * 180 / pi, 43.085, 1e-3);
}

TEST(Orientation, MayBeWrittenOverTheAxes) {
    for (const Axes& axes : RandomAxes(100)) {
        double numbers[9];
        std::copy_n(axes.data(), 9, numbers);
        KinoraVeltrixRotationFor(numbers, numbers);
        EXPECT_EQ(Axes(Eigen::Map<const Axes>(numbers)), MatrixOf(TransformFor(axes)));
    }
}

TEST(Orientation, OfAxesThatAreSlightlyOffIsSlightlyOff) {
    std::mt19937_64 random(21);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    for (const Axes& axes : RandomAxes(1000)) {
        const Axes off = axes + 1e-6 * Axes::NullaryExpr([&] { return uniform(random); });
        const Transform transform = TransformFor(off);
        EXPECT_LE((MatrixOf(transform) * MatrixOf(transform).transpose() - Axes::Identity()).norm(), 2e-15);
        EXPECT_LE(Distance(FrameWithoutTexts(transform), axes), 5e-6);
    }
}

TEST(Orientation, DoesNotDependOnACommonScale) {
    for (const Axes& axes : RandomAxes(100)) {
        for (const double scale : {1e-3, 25.4, 1e100}) {
            EXPECT_LE((MatrixOf(TransformFor(scale * axes)) - MatrixOf(TransformFor(axes))).norm(), 1e-15);
        }
    }
}

TEST(Orientation, IsAlwaysARotation) {
    EXPECT_EQ(MatrixOf(TransformFor(Axes::Zero())), Axes::Identity());
    const Axes mirrored = Rows({1, 0, 0, 0, 1, 0, 0, 0, -1});
    for (const Axes& axes : RandomAxes(1000)) {
        const Axes rotation = MatrixOf(TransformFor(mirrored * axes));
        EXPECT_LE((rotation * rotation.transpose() - Axes::Identity()).norm(), 2e-15);
        EXPECT_NEAR(rotation.determinant(), 1.0, 1e-15);
    }
    Axes broken = Axes::Identity();
    broken(0, 0) = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(MatrixOf(TransformFor(broken)).array().isNaN().all());
}

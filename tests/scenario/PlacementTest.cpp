#include "scenario/Placement.h"

#include "tests/support/Pi.h"

#include <cmath>
#include <gtest/gtest.h>

namespace kinora::scenario {
namespace {

PrescribedTurn About(const Vector& axis, const char* formula) {
    return PrescribedTurn(
        AxisTurn{axis.normalized(), PrescribedMotion(Expression::Parse(formula, Expression::Variables::Time))});
}

/// A quarter about z, then a third of a turn about the diagonal, then back by more than half a turn.
PrescribedTurn ThreePieces() {
    const Quaternion first = TurnBy({0.0, 0.0, pi / 2.0});
    const Quaternion second = TurnBy(Vector::Ones().normalized() * (2.0 * pi / 3.0)) * first;
    const Quaternion third = TurnBy({-0.2, 1.0, 0.4}) * second;
    // The sign of a quaternion is nothing that a table may rely on.
    const Quaternion negative(-third.w(), -third.x(), -third.y(), -third.z());
    return PrescribedTurn(TurnTable{{{0.0, Quaternion::Identity()}, {1.0, first}, {1.5, second}, {4.0, negative}}});
}

/// How far two turns are apart, radians.
double Apart(const Quaternion& a, const Quaternion& b) {
    return RotationVector(a * b.conjugate()).norm();
}

/// The angular velocity that two turns near a time tell.
Vector Differentiated(const PrescribedTurn& turn, double time) {
    constexpr double step = 1e-5;
    return RotationVector(turn.Evaluate(time + step) * turn.Evaluate(time - step).conjugate()) / (2.0 * step);
}

TEST(PrescribedTurn, DoesNotTurnUnlessToldTo) {
    const PrescribedTurn turn;
    EXPECT_EQ(turn.Evaluate(3.0).coeffs(), Quaternion::Identity().coeffs());
    EXPECT_EQ(turn.AngularVelocity(3.0), Vector::Zero());
    EXPECT_EQ(turn.SweptBetween(0.0, 3.0), Vector::Zero());
}

TEST(PrescribedTurn, FollowsAFormulaAboutAnAxis) {
    const PrescribedTurn turn = About({0.0, 3.0, 4.0}, "2*t + 0.5*sin(3*t)");
    for (const double time : {0.0, 0.3, 2.0, 11.0}) {
        const double angle = 2.0 * time + 0.5 * std::sin(3.0 * time);
        EXPECT_LT(Apart(turn.Evaluate(time), TurnBy(Vector(0.0, 0.6, 0.8) * angle)), 1e-14) << time;
        EXPECT_LT((turn.AngularVelocity(time) - Differentiated(turn, time)).norm(), 1e-8) << time;
    }
    EXPECT_LT((turn.AngularVelocity(0.0) - Vector(0.0, 2.1, 2.8)).norm(), 1e-15);
}

TEST(PrescribedTurn, CountsFullTurnsOfAFormula) {
    const PrescribedTurn turn = About(Vector::UnitZ(), "100*t");
    EXPECT_LT((turn.SweptBetween(1.0, 3.0) - Vector(0.0, 0.0, 200.0)).norm(), 1e-12);
}

TEST(PrescribedTurn, HasNoValueWhereItsFormulaHasNoneButAlwaysASpeed) {
    const PrescribedTurn turn = About(Vector::UnitZ(), "sqrt(t)");
    EXPECT_FALSE(turn.Evaluate(-1.0).coeffs().allFinite());
    EXPECT_EQ(turn.AngularVelocity(0.0), Vector::Zero());
}

TEST(PrescribedTurn, FollowsATableOfAngles) {
    const PrescribedTurn turn(AxisTurn{Vector::UnitX(), PrescribedMotion(MotionTable{{{0.0, 0.0}, {2.0, 4.0 * pi}}})});
    EXPECT_LT(Apart(turn.Evaluate(0.5), TurnBy({pi, 0.0, 0.0})), 1e-14);
    EXPECT_LT((turn.SweptBetween(0.0, 2.0) - Vector(4.0 * pi, 0.0, 0.0)).norm(), 1e-14);
}

TEST(PrescribedTurn, TurnsSteadilyBetweenTheRowsOfATable) {
    const PrescribedTurn turn = ThreePieces();
    EXPECT_LT(Apart(turn.Evaluate(0.25), TurnBy({0.0, 0.0, pi / 8.0})), 1e-15);
    EXPECT_LT((turn.AngularVelocity(0.25) - Vector(0.0, 0.0, pi / 2.0)).norm(), 1e-15);
    EXPECT_LT((turn.AngularVelocity(1.25) - Vector::Ones().normalized() * (4.0 * pi / 3.0)).norm(), 1e-14);
    EXPECT_LT((turn.AngularVelocity(2.0) - Vector(-0.08, 0.4, 0.16)).norm(), 1e-14);
    for (const double time : {0.25, 0.99, 1.25, 2.0, 3.9}) {
        EXPECT_LT((turn.AngularVelocity(time) - Differentiated(turn, time)).norm(), 1e-9) << time;
        EXPECT_NEAR(turn.Evaluate(time).norm(), 1.0, 1e-15) << time;
    }
}

TEST(PrescribedTurn, AgreesWithSphericalInterpolation) {
    const Quaternion a = TurnBy({0.3, -0.2, 0.9});
    const Quaternion b = TurnBy({-1.0, 0.4, 0.1});
    const PrescribedTurn turn(TurnTable{{{0.0, a}, {1.0, b}}});
    for (const double part : {0.0, 0.1, 0.5, 0.9, 1.0}) {
        EXPECT_LT(Apart(turn.Evaluate(part), a.slerp(part, b)), 1e-14) << part;
    }
}

TEST(PrescribedTurn, StandsStillOutsideItsTable) {
    const PrescribedTurn turn = ThreePieces();
    EXPECT_LT(Apart(turn.Evaluate(-1.0), Quaternion::Identity()), 1e-15);
    EXPECT_EQ(turn.AngularVelocity(-1.0), Vector::Zero());
    EXPECT_LT(Apart(turn.Evaluate(9.0), turn.Evaluate(4.0)), 1e-15);
    EXPECT_EQ(turn.AngularVelocity(4.0), Vector::Zero());
    // At a corner it is the time that follows that counts.
    EXPECT_LT((turn.AngularVelocity(0.0) - Vector(0.0, 0.0, pi / 2.0)).norm(), 1e-15);
    EXPECT_LT((turn.AngularVelocity(1.5) - Vector(-0.08, 0.4, 0.16)).norm(), 1e-14);
}

TEST(PrescribedTurn, SweepsEveryPieceOfItsTable) {
    const PrescribedTurn turn = ThreePieces();
    const Vector all_W =
        Vector(0.0, 0.0, pi / 2.0) + Vector::Ones().normalized() * (2.0 * pi / 3.0) + Vector(-0.2, 1.0, 0.4);
    EXPECT_LT((turn.SweptBetween(-5.0, 9.0) - all_W).norm(), 1e-14);
    EXPECT_LT(
        (turn.SweptBetween(0.5, 1.25) - Vector(0.0, 0.0, pi / 4.0) - Vector::Ones().normalized() * (pi / 3.0)).norm(),
        1e-14);
    EXPECT_LT((turn.SweptBetween(2.0, 2.5) - Vector(-0.04, 0.2, 0.08)).norm(), 1e-15);
    EXPECT_EQ(turn.SweptBetween(-2.0, -1.0), Vector::Zero());
    EXPECT_EQ(turn.SweptBetween(5.0, 6.0), Vector::Zero());
}

TEST(PrescribedTurn, SaysWhatItIs) {
    EXPECT_EQ(About(Vector::UnitZ(), "300*t").Description(), "300*t about 0, 0, 1");
    EXPECT_EQ(About(Vector::UnitZ(), "300*t").Definition(), "300*t about 0, 0, 1");
    EXPECT_EQ(ThreePieces().Description(), "table of 4 turns, 0 s to 4 s");
    const PrescribedTurn half(TurnTable{{{0.0, Quaternion::Identity()}, {2.0, Quaternion(0.0, 0.0, 1.0, 0.0)}}});
    EXPECT_EQ(half.Definition(), "0 s: 1 0 0 0, 2 s: 0 0 1 0");
}

} // namespace
} // namespace kinora::scenario

#include "host/mechanism/FreeTurn.h"

#include <Eigen/Eigenvalues>
#include <array>
#include <cmath>

namespace kinora::host {

using namespace scenario;

namespace {

constexpr double longestStretch = 0.1; // radians

/// Kahan and Li's nine stages of order six: from the middle one on they mirror the first ones.
constexpr double stage1 = 0.39216144400731413928;
constexpr double stage2 = 0.33259913678935943860;
constexpr double stage3 = -0.70624617255763935981;
constexpr double stage4 = 0.082213596293550800230;
constexpr double stage5 = 0.79854399093482996340;
constexpr std::array<double, 9> stages = {stage1, stage2, stage3, stage4, stage5, stage4, stage3, stage2, stage1};

class Splitting {
public:
    Splitting(const Quaternion& turn, const Vector& angularMomentum_W, const PrincipalInertia& inertia)
        : m_inertia(inertia), m_momentum_P(inertia.axes.transpose() * (turn.conjugate() * angularMomentum_W)) {
        m_result.turn = turn;
    }

    void Advance(double duration) {
        for (const double stage : stages) {
            Stage(duration * stage);
        }
    }

    FreeTurn Result() const {
        FreeTurn result = m_result;
        result.turn.normalize();
        return result;
    }

private:
    /// Second order and symmetric.
    void Stage(double duration) {
        TurnAbout(0, 0.5 * duration);
        TurnAbout(1, 0.5 * duration);
        TurnAbout(2, duration);
        TurnAbout(1, 0.5 * duration);
        TurnAbout(0, 0.5 * duration);
    }

    /// The flow of the kinetic energy of one principal axis.
    void TurnAbout(int axis, double duration) {
        const double angle = m_momentum_P[axis] / m_inertia.moments[axis] * duration;
        const Vector axis_0 = m_inertia.axes.col(axis);
        m_result.swept_W += angle * (m_result.turn * axis_0);
        m_result.turn = m_result.turn * Quaternion(Eigen::AngleAxisd(angle, axis_0));
        // The momentum stays in space, and so turns back in the body.
        const int j = (axis + 1) % 3;
        const int k = (axis + 2) % 3;
        const double cosine = std::cos(angle);
        const double sine = std::sin(angle);
        const double along = m_momentum_P[j];
        m_momentum_P[j] = cosine * along + sine * m_momentum_P[k];
        m_momentum_P[k] = cosine * m_momentum_P[k] - sine * along;
    }

    const PrincipalInertia& m_inertia;
    Vector m_momentum_P;
    FreeTurn m_result;
};

} // namespace

PrincipalInertia PrincipalInertiaOf(const Matrix& inertia) {
    PrincipalInertia principal;
    if (inertia.isDiagonal(0.0)) {
        principal.moments = inertia.diagonal();
        return principal;
    }
    const Eigen::SelfAdjointEigenSolver<Matrix> solver(inertia);
    principal.moments = solver.eigenvalues();
    principal.axes = solver.eigenvectors();
    if (principal.axes.determinant() < 0.0) {
        principal.axes.col(0) = -principal.axes.col(0);
    }
    return principal;
}

FreeTurn TurnFreely(const Quaternion& turn, const Vector& angularMomentum_W, const PrincipalInertia& inertia,
                    double duration) {
    const double fastestTurn = angularMomentum_W.norm() / inertia.moments.minCoeff();
    const double stretches = std::fmax(1.0, std::ceil(fastestTurn * std::fabs(duration) / longestStretch));
    Splitting splitting(turn, angularMomentum_W, inertia);
    for (double i = 0.0; i < stretches; ++i) {
        splitting.Advance(duration / stretches);
    }
    return splitting.Result();
}

} // namespace kinora::host

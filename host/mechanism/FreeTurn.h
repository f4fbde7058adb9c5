#pragma once

#include "scenario/Rigid.h"

namespace kinora::host {

/// Principal moments of inertia and their axes.
struct PrincipalInertia {
    /// Columns are the principal axes, right-handed.
    scenario::Matrix axes = scenario::Matrix::Identity();
    /// In the columns' order, kg m^2.
    scenario::Vector moments = scenario::Vector::Zero();
};

/// Of an inertia that is diagonal already the axes stay as they are.
PrincipalInertia PrincipalInertiaOf(const scenario::Matrix& inertia);

/// Where a rigid body is turned to, and how.
struct FreeTurn {
    scenario::Quaternion turn = scenario::Quaternion::Identity();
    /// The integral of the angular velocity, radians about the global axes.
    scenario::Vector swept_W = scenario::Vector::Zero();
};

/// The turning of a rigid body on which no torque acts: its angular momentum stays.
///
/// The kinetic energy is split into those of the three principal axes, whose flows are plain turns (A. Dullweber,
/// B. Leimkuhler, R. McLachlan, J. Chem. Phys. 107 (1997) 5840), symmetric, and composed to sixth order (W. Kahan,
/// R.-C. Li, Math. Comp. 66 (1997) 1089) in stretches of at most a tenth of a radian. So it is symplectic,
/// time-reversible, and keeps the energy to rounding.
/// @param turn                away from the pose of `inertia`
/// @param angularMomentum_W   kg m^2/s
/// @param inertia             all moments more than 0
/// @param duration            seconds
FreeTurn TurnFreely(const scenario::Quaternion& turn, const scenario::Vector& angularMomentum_W,
                    const PrincipalInertia& inertia, double duration);

} // namespace kinora::host

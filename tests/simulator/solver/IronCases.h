#pragma once
// Bodies with iron and with magnets of a permeability other than 1, and what is known of them: closed forms, and
// numbers of yoke_reference.py.
#include "tests/simulator/solver/IronReferences.h"

#include <functional>
#include <string>
#include <vector>

namespace iron {

/// Something that a field tells, as a vector.
struct FieldCase {
    std::string name;
    std::string parameter;
    double value = 0;
    std::string quantity;
    std::vector<vantor::solver::Body> bodies;
    std::function<Eigen::Vector3d(const vantor::solver::FieldEvaluator&)> measure;
    Eigen::Vector3d expected;
    /// Deviation that the solver should not exceed, of the expected value.
    double wanted = 0;
};

/// The load on the last body.
struct LoadCase {
    std::string name;
    std::string parameter;
    double value = 0;
    std::vector<vantor::solver::Body> bodies;
    references::Load load;
    /// Torques are judged about it.
    Eigen::Vector3d centre;
    /// Deviation that the solver should not exceed, of force and torque.
    double wanted = 0;
    /// Where facets stand for what is round: the same with coarser ones, which change the load seven times as much.
    std::vector<vantor::solver::Body> coarser = {};
};

/// What the solver says of a case, and the load on the last body with what facets change left out.
struct Solved {
    vantor::solver::Solution solution;
    references::Load load;
};
Solved SolveCase(const LoadCase& one);

/// In the nearly uniform field of a far magnet: dipole moments over the volume and the field (of iron spheres and a
/// cube), and the field within shells over the field.
std::vector<FieldCase> SpheresInAField();
std::vector<FieldCase> CubeInAField();
std::vector<FieldCase> ShellsInAField();
/// mu0 M and B in the middle of spheres of permeable magnets, T. Away from the middle facets change them by as much as
/// 1 %.
std::vector<FieldCase> MagnetSpheres();

/// A cube magnet over a thick and wide plate of iron, upright and tilted.
std::vector<LoadCase> MagnetsOverAPlate();
/// A magnet sphere beside an iron sphere.
std::vector<LoadCase> MagnetAndIronSpheres();
/// Round and block magnets on iron yokes, facing their mirror images.
std::vector<LoadCase> RoundYokes();
std::vector<LoadCase> BlockYokes();
/// A cylinder magnet over a thin disc of iron.
std::vector<LoadCase> MagnetsOverADisc();
/// Iron of a curve, so thin that it saturates.
std::vector<LoadCase> SaturatedYokes();
std::vector<LoadCase> SaturatedDiscs();

} // namespace iron

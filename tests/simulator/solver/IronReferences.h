#pragma once
// Closed forms for iron, and for magnets of a permeability other than 1. M = M0 + (mu - 1) H everywhere.
#include "tests/simulator/solver/References.h"

#include <functional>

namespace references {

/// M of a sphere of iron, times the field far away.
double SphereMagnetisation(double permeability);

/// The field within a spherical shell of iron, times the field far away. Source: J. D. Jackson, Classical
/// Electrodynamics, 1999, chapter 5.12.
double ShellField(double permeability, double innerOverOuterRadius);

/// M within a sphere of a magnet, times M0.
double MagnetSphereMagnetisation(double permeability);

/// Dipole moment of a cube of infinite permeability, times its volume and the field far away. Source: J. Helsing,
/// K.-M. Perfekt, "On the polarizability and capacitance of the cube", Applied and Computational Harmonic Analysis 34
/// (2013) 445-468.
constexpr double cubePolarisability = 3.644305190268;

/// The mirror images that iron below the plane z = `top` makes of sheets above it.
std::vector<Sheet> ImagesOf(std::vector<Sheet> sheets, double top, double permeability);

enum class DipoleDirection { Towards, Across };

/// Attraction (N) between a dipole (A m^2) and a sphere of iron whose middles are `distance` apart, from the
/// multipoles that the dipole makes in the sphere. The dipole looks towards the sphere's middle, or across.
double SphereAttraction(DipoleDirection direction, double moment, double radius, double distance, double permeability);

/// Potential energy (J) of point charges (A m) and the multipoles that they make in a sphere of iron about the origin.
struct PointCharge {
    Eigen::Vector3d place;
    double charge = 0;
};
double SphereEnergy(const std::vector<PointCharge>& charges, double radius, double permeability);

/// Dipole moment (A m^2) of all charges within a ball, of which `field` is H. From the field at twelve points of the
/// ball's surface, which leave out what multipoles of order 2, 3 and 4 add to it.
Eigen::Vector3d MomentWithin(const std::function<Eigen::Vector3d(const Eigen::Vector3d&)>& field,
                             const Eigen::Vector3d& centre, double radius);

} // namespace references

#pragma once
// The plain way to the same loads: every magnet cut into cells, every cell a point dipole, all pairs summed up.
#include "tests/simulator/solver/References.h"

#include <vector>

struct Dipole {
    /// Metres and A m^2, global.
    std::array<double, 3> position, moment;
};

/// A body's cells: every magnet's box cut into cubes, nearly, and what is inside of the magnet as a dipole in its
/// middle. The moments are scaled to the magnet's whole volume.
/// @param edge  metres
std::vector<Dipole> CellsOf(const vantor::solver::Body& body, double edge);

/// Loads on all bodies, by the forces and torques between all pairs of cells of different bodies.
std::vector<references::Load> DipoleLoads(const std::vector<std::vector<Dipole>>& bodies);

/// Of a closed mesh.
double VolumeOf(const vantor::solver::TriangleMesh& mesh);

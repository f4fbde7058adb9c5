#pragma once
// Ring meshes of any size, for measurements over the number of triangles.
#include "tests/simulator/solver/MeshCases.h"

/// A ring as in tests/meshes/ring.geo (outer radius 20 mm, bore 10 mm, height 10 mm), of about so many triangles.
/// Ordered: its section carried round, row by row. Otherwise the corners are moved on the surface by up to a fifth of a
/// row, the diagonals and the order of the triangles are drawn by lot, the same one every time.
meshes::SharedMesh RingMesh(int triangles, bool ordered);

#include "bench/meshes/Rings.h"

#include <algorithm>
#include <cmath>
#include <random>

using Eigen::Vector3d;

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double bore = 0.010, width = 0.010, height = 0.010;
constexpr double largestShift = 0.2; // of a row: the quadrangles stay convex

/// The corners of a ring: `rows` along every side of its square section, `columns` around.
class Grid {
public:
    Grid(int rows, int columns, bool ordered) : m_rows(rows), m_columns(columns), m_ordered(ordered) {}

    vantor::solver::TriangleMesh Mesh() {
        vantor::solver::TriangleMesh mesh;
        for (int column = 0; column < m_columns; ++column) {
            for (int row = 0; row < 4 * m_rows; ++row) {
                mesh.vertices.push_back(Corner(row, column));
            }
        }
        for (int column = 0; column < m_columns; ++column) {
            for (int row = 0; row < 4 * m_rows; ++row) {
                AddQuad(mesh, {Index(row, column), Index(row, column + 1), Index(row + 1, column + 1),
                               Index(row + 1, column)});
            }
        }
        if (!m_ordered) {
            std::shuffle(mesh.triangles.begin(), mesh.triangles.end(), m_generator);
        }
        return mesh;
    }

private:
    int Index(int row, int column) const { return column % m_columns * 4 * m_rows + row % (4 * m_rows); }

    double Shift() {
        return m_ordered ? 0 : largestShift * (2 * static_cast<double>(m_generator()) / 4294967295.0 - 1);
    }

    /// Rows run along the lower face outwards, up the outer wall, along the upper face inwards and down the bore.
    Vector3d Corner(int row, int column) {
        const double angle = 2 * pi * (column + Shift()) / m_columns;
        const double at = (row % m_rows == 0 ? 0 : (row % m_rows + Shift()) / m_rows);
        double radius = bore, z = -height / 2;
        switch (row / m_rows) {
        case 0:
            radius += at * width;
            break;
        case 1:
            radius += width;
            z += at * height;
            break;
        case 2:
            radius += (1 - at) * width;
            z += height;
            break;
        default:
            z += (1 - at) * height;
        }
        return {radius * std::cos(angle), radius * std::sin(angle), z};
    }

    void AddQuad(vantor::solver::TriangleMesh& mesh, std::array<int, 4> corners) {
        if (!m_ordered && m_generator() % 2 == 0) {
            std::rotate(corners.begin(), corners.begin() + 1, corners.end());
        }
        const auto [a, b, c, d] = corners;
        mesh.triangles.push_back({a, b, c});
        mesh.triangles.push_back({a, c, d});
    }

    int m_rows, m_columns;
    bool m_ordered;
    std::mt19937 m_generator{7};
};

} // namespace

meshes::SharedMesh RingMesh(int triangles, bool ordered) {
    // As many rows and columns as make the triangles half squares in the middle: two for each of 4 x rows x columns.
    const double edge = std::sqrt(8 * width * 2 * pi * (bore + width / 2) / triangles);
    const int rows = std::max(1, static_cast<int>(std::lround(width / edge)));
    return shapes::Shared(Grid(rows, std::max(8, triangles / (8 * rows)), ordered).Mesh());
}

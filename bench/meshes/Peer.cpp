#include "bench/meshes/Peer.h"

#include <algorithm>
#include <cmath>

using Eigen::Vector3d;
using vantor::solver::Magnet;
using vantor::solver::TriangleMesh;

namespace {

/// The box of a mesh cut into cells: what part of each is inside of the mesh, and that part's middle. Found by upright
/// lines, several through every cell.
class Cells {
public:
    struct Cell {
        double volume = 0;
        Vector3d middle = Vector3d::Zero();
    };

    Cells(const TriangleMesh& mesh, double edge) {
        for (const Vector3d& vertex : mesh.vertices) {
            m_box.extend(vertex);
        }
        m_count = (m_box.sizes() / edge).array().round().cwiseMax(1).cast<std::size_t>();
        m_lines = linesPerEdge * m_count.head<2>();
        m_apart = m_box.sizes().head<2>().array() / m_lines.cast<double>();
        m_crossings.resize(m_lines.prod());
        for (const auto& triangle : mesh.triangles) {
            const auto corner = [&](std::size_t i) { return mesh.vertices[static_cast<std::size_t>(triangle[i])]; };
            Cross(corner(0), corner(1), corner(2));
        }
        m_cells.resize(m_count.prod());
        for (std::size_t line = 0; line < m_crossings.size(); ++line) {
            Fill(line % m_lines.x(), line / m_lines.x());
        }
    }

    const std::vector<Cell>& All() const { return m_cells; }

private:
    static constexpr std::size_t linesPerEdge = 4;

    Eigen::Vector2d At(std::size_t x, std::size_t y) const {
        const Eigen::Array2d number(static_cast<double>(x), static_cast<double>(y));
        const Eigen::Array2d aside(0.5 + 3e-7, 0.5 + 4e-7); // of the mesh's edges, which often run through the middle
        return m_box.min().head<2>().array() + (number + aside) * m_apart;
    }

    /// The first line that is not before a coordinate.
    std::size_t First(double at, int axis) const {
        return static_cast<std::size_t>(std::max(0.0, std::ceil((at - m_box.min()[axis]) / m_apart[axis] - 0.501)));
    }

    void Cross(const Vector3d& a, const Vector3d& b, const Vector3d& c) {
        const auto cross = [](const Eigen::Vector2d& u, const Eigen::Vector2d& v) {
            return u.x() * v.y() - u.y() * v.x();
        };
        const Eigen::Vector2d ab = (b - a).head<2>(), ac = (c - a).head<2>();
        const double twice = cross(ab, ac);
        if (twice == 0) {
            return; // upright
        }
        const Vector3d lower = a.cwiseMin(b).cwiseMin(c), upper = a.cwiseMax(b).cwiseMax(c);
        for (std::size_t y = First(lower.y(), 1); y < m_lines.y() && At(0, y).y() <= upper.y(); ++y) {
            for (std::size_t x = First(lower.x(), 0); x < m_lines.x() && At(x, 0).x() <= upper.x(); ++x) {
                const Eigen::Vector2d to = At(x, y) - a.head<2>();
                const double v = cross(to, ac) / twice, w = cross(ab, to) / twice;
                if (v >= 0 && w >= 0 && v + w <= 1) {
                    m_crossings[y * m_lines.x() + x].push_back(a.z() + v * (b - a).z() + w * (c - a).z());
                }
            }
        }
    }

    /// Gives a line's stretches inside the mesh to the cells that it runs through.
    void Fill(std::size_t x, std::size_t y) {
        std::vector<double>& heights = m_crossings[y * m_lines.x() + x];
        std::sort(heights.begin(), heights.end());
        const double layer = m_box.sizes().z() / static_cast<double>(m_count.z());
        for (std::size_t k = 0; k + 1 < heights.size(); k += 2) {
            for (std::size_t z = 0; z < m_count.z(); ++z) {
                const double floor = m_box.min().z() + static_cast<double>(z) * layer;
                const double from = std::max(heights[k], floor), to = std::min(heights[k + 1], floor + layer);
                if (from < to) {
                    const Eigen::Vector2d at = At(x, y);
                    Add({x / linesPerEdge, y / linesPerEdge, z}, {at.x(), at.y(), (from + to) / 2},
                        m_apart.prod() * (to - from));
                }
            }
        }
    }

    void Add(const std::array<std::size_t, 3>& index, const Vector3d& middle, double volume) {
        Cell& cell = m_cells[(index[2] * m_count.y() + index[1]) * m_count.x() + index[0]];
        cell.volume += volume;
        cell.middle += volume / cell.volume * (middle - cell.middle);
    }

    Eigen::AlignedBox3d m_box;
    Eigen::Array<std::size_t, 3, 1> m_count;
    Eigen::Array<std::size_t, 2, 1> m_lines;
    Eigen::Array2d m_apart;
    std::vector<std::vector<double>> m_crossings;
    std::vector<Cell> m_cells;
};

void AddCells(const Magnet& magnet, double edge, std::vector<Dipole>& dipoles) {
    const Vector3d magnetisation = magnet.pose.linear() * magnet.magnetisation;
    const Cells cells(*magnet.mesh, edge);
    double volume = 0;
    for (const Cells::Cell& cell : cells.All()) {
        volume += cell.volume;
    }
    const double scale = VolumeOf(*magnet.mesh) / volume;
    for (const Cells::Cell& cell : cells.All()) {
        if (cell.volume > 0) {
            const Vector3d at = magnet.pose * cell.middle, moment = scale * cell.volume * magnetisation;
            dipoles.push_back({{at.x(), at.y(), at.z()}, {moment.x(), moment.y(), moment.z()}});
        }
    }
}

/// Adds the load of one body's cells on another's, and what it does in turn.
void AddLoads(const std::vector<Dipole>& source, const std::vector<Dipole>& target, references::Load& onSource,
              references::Load& onTarget) {
    constexpr double fieldConstant = 1e-7;
    for (const Dipole& to : target) {
        const Vector3d at(to.position[0], to.position[1], to.position[2]),
            moment(to.moment[0], to.moment[1], to.moment[2]);
        Vector3d force = Vector3d::Zero(), field = Vector3d::Zero(), sourceTorque = Vector3d::Zero();
        for (const Dipole& from : source) {
            const Vector3d place(from.position[0], from.position[1], from.position[2]);
            const Vector3d other(from.moment[0], from.moment[1], from.moment[2]);
            const Vector3d r = at - place;
            const double inverse = 1 / r.squaredNorm(), cube = fieldConstant * inverse * std::sqrt(inverse);
            const double mr = moment.dot(r) * inverse, or_ = other.dot(r) * inverse;
            const Vector3d pull =
                3 * cube * (or_ * moment + mr * other + (moment.dot(other) * inverse - 5 * mr * or_) * r);
            force += pull;
            field += cube * (3 * or_ * r - other);
            sourceTorque += other.cross(cube * (3 * mr * r - moment)) - place.cross(pull);
        }
        onTarget += {force, moment.cross(field) + at.cross(force)};
        onSource += {-force, sourceTorque};
    }
}

} // namespace

double VolumeOf(const TriangleMesh& mesh) {
    double volume = 0;
    for (const auto& [a, b, c] : mesh.triangles) {
        const auto at = [&mesh](int corner) { return mesh.vertices[static_cast<std::size_t>(corner)]; };
        volume += at(a).dot(at(b).cross(at(c))) / 6;
    }
    return volume;
}

std::vector<Dipole> CellsOf(const vantor::solver::Body& body, double edge) {
    std::vector<Dipole> dipoles;
    for (const Magnet& magnet : body.magnets) {
        AddCells(magnet, edge, dipoles);
    }
    return dipoles;
}

std::vector<references::Load> DipoleLoads(const std::vector<std::vector<Dipole>>& bodies) {
    std::vector<references::Load> loads(bodies.size());
    for (std::size_t i = 0; i < bodies.size(); ++i) {
        for (std::size_t j = i + 1; j < bodies.size(); ++j) {
            AddLoads(bodies[i], bodies[j], loads[i], loads[j]);
        }
    }
    return loads;
}

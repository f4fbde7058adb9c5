#include "simulator/analysis/FieldExport.h"

#include "simulator/analysis/FieldModel.h"
#include "simulator/model/DesktopError.h"
#include "simulator/model/Text.h"

#include <algorithm>
#include <cmath>

namespace vantor::analysis {
namespace {

constexpr int cellsAlongLongestSide = 30;

/// Points of a regular grid, x running fastest.
struct Grid {
    Eigen::Vector3d middle;
    Eigen::Vector3d spacing;
    std::array<int, 3> points{};

    std::size_t PointCount() const {
        return static_cast<std::size_t>(points[0]) * static_cast<std::size_t>(points[1]) *
               static_cast<std::size_t>(points[2]);
    }

    std::size_t CellCount() const {
        return static_cast<std::size_t>(points[0] - 1) * static_cast<std::size_t>(points[1] - 1) *
               static_cast<std::size_t>(points[2] - 1);
    }

    template <typename Visit>
    void ForEachPoint(Visit visit) const {
        // From the middle, so that points on both sides of it mirror each other.
        const Eigen::Vector3d last(points[0] - 1, points[1] - 1, points[2] - 1);
        for (int k = 0; k < points[2]; ++k) {
            for (int j = 0; j < points[1]; ++j) {
                for (int i = 0; i < points[0]; ++i) {
                    const Eigen::Vector3d steps = Eigen::Vector3d(i, j, k) - last / 2;
                    visit(Eigen::Vector3d(middle + steps.cwiseProduct(spacing)));
                }
            }
        }
    }

    int PointNumber(int i, int j, int k) const { return (k * points[1] + j) * points[0] + i; }
};

/// @throws model::DesktopError (SolutionError) when there is nothing magnetic
model::Box BoxAround(const std::vector<solver::Body>& bodies) {
    model::Box box;
    for (const auto& body : bodies) {
        for (const auto& magnet : body.magnets) {
            for (const auto& vertex : magnet.mesh->vertices) {
                box.Add(magnet.pose * vertex);
            }
        }
    }
    if (box.IsEmpty()) {
        throw model::DesktopError(model::ErrorCode::SolutionError, "the design has neither magnets nor iron");
    }
    const Eigen::Vector3d margin = Eigen::Vector3d::Constant(0.5 * (box.upper - box.lower).maxCoeff());
    box.lower -= margin;
    box.upper += margin;
    return box;
}

/// An odd number of points along every axis, for cells of about equal edge.
std::array<int, 3> PointsFor(const Eigen::Vector3d& size) {
    const double edge = size.maxCoeff() / cellsAlongLongestSide;
    std::array<int, 3> points{};
    std::transform(size.begin(), size.end(), points.begin(), [edge](double side) {
        return 2 * std::max(1, static_cast<int>(std::ceil(side / edge / 2 - 1e-9))) + 1;
    });
    return points;
}

Grid MakeGrid(const FieldGrid& wanted, const std::vector<solver::Body>& bodies) {
    const model::Box box = wanted.box ? *wanted.box : BoxAround(bodies);
    const Eigen::Vector3d size = box.upper - box.lower;
    Grid grid;
    grid.middle = box.lower + size / 2;
    grid.points = wanted.points ? *wanted.points : PointsFor(size);
    grid.spacing = size.cwiseQuotient(Eigen::Vector3d(grid.points[0] - 1, grid.points[1] - 1, grid.points[2] - 1));
    return grid;
}

void AppendVector(std::string& text, const Eigen::Vector3d& vector) {
    for (const double component : vector) {
        text += model::FormatNumber(component) + " ";
    }
    text += "\n";
}

std::string PointsText(const Grid& grid) {
    std::string text;
    grid.ForEachPoint([&](const Eigen::Vector3d& point) { AppendVector(text, point); });
    return text;
}

/// The vectors of both fields, point by point.
struct FieldTexts {
    std::string h;
    std::string b;
};

FieldTexts TextsOf(const Grid& grid, const solver::FieldEvaluator& field) {
    FieldTexts texts;
    grid.ForEachPoint([&](const Eigen::Vector3d& point) {
        const Eigen::Vector3d h = field.H(point);
        AppendVector(texts.h, h);
        AppendVector(texts.b, solver::vacuumPermeability * (h + field.M(point)));
    });
    return texts;
}

/// Hexahedra (VTK cell type 12) with their corners in VTK's order.
std::string CellsText(const Grid& grid) {
    std::string corners;
    for (int k = 0; k + 1 < grid.points[2]; ++k) {
        for (int j = 0; j + 1 < grid.points[1]; ++j) {
            for (int i = 0; i + 1 < grid.points[0]; ++i) {
                for (const int corner :
                     {grid.PointNumber(i, j, k), grid.PointNumber(i + 1, j, k), grid.PointNumber(i + 1, j + 1, k),
                      grid.PointNumber(i, j + 1, k), grid.PointNumber(i, j, k + 1), grid.PointNumber(i + 1, j, k + 1),
                      grid.PointNumber(i + 1, j + 1, k + 1), grid.PointNumber(i, j + 1, k + 1)}) {
                    corners += std::to_string(corner) + " ";
                }
                corners += "\n";
            }
        }
    }
    return corners;
}

std::string DataArray(const std::string& attributes, const std::string& content) {
    return "<DataArray " + attributes + " format=\"ascii\">\n" + content + "</DataArray>\n";
}

std::string Repeated(std::size_t count, const std::function<std::string(std::size_t)>& item) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += item(i) + (i % 20 == 19 ? "\n" : " ");
    }
    return text + "\n";
}

std::string WriteVtu(const Grid& grid, const solver::FieldEvaluator& field) {
    std::string text = "<?xml version=\"1.0\"?>\n"
                       "<VTKFile type=\"UnstructuredGrid\" version=\"0.1\" byte_order=\"LittleEndian\">\n"
                       "<UnstructuredGrid>\n<Piece NumberOfPoints=\"" +
                       std::to_string(grid.PointCount()) + "\" NumberOfCells=\"" + std::to_string(grid.CellCount()) +
                       "\">\n";
    const FieldTexts fields = TextsOf(grid, field);
    text += "<PointData Vectors=\"H\">\n" +
            DataArray("type=\"Float64\" Name=\"H\" NumberOfComponents=\"3\"", fields.h) +
            DataArray("type=\"Float64\" Name=\"B\" NumberOfComponents=\"3\"", fields.b) + "</PointData>\n";
    text += "<Points>\n" + DataArray("type=\"Float64\" NumberOfComponents=\"3\"", PointsText(grid)) + "</Points>\n";
    text += "<Cells>\n" + DataArray("type=\"Int32\" Name=\"connectivity\"", CellsText(grid)) +
            DataArray("type=\"Int32\" Name=\"offsets\"",
                      Repeated(grid.CellCount(), [](std::size_t i) { return std::to_string((i + 1) * 8); })) +
            DataArray("type=\"UInt8\" Name=\"types\"", Repeated(grid.CellCount(), [](std::size_t) { return "12"; })) +
            "</Cells>\n";
    return text + "</Piece>\n</UnstructuredGrid>\n</VTKFile>\n";
}

/// The variables as they were when the design was solved.
model::Variables SolvedVariables(const model::Design& design) {
    if (!design.solution) {
        throw model::DesktopError(model::ErrorCode::SolutionError,
                                  "the design " + model::Quoted(design.name) + " has not been solved");
    }
    std::vector<model::Variables::Variable> values;
    for (const auto& [name, value] : design.solution->variables) {
        if (design.variables.Has(name)) {
            values.push_back({name, value});
        }
    }
    model::Variables variables = design.variables;
    variables.Change(values);
    return variables;
}

} // namespace

std::string ExportFields(const model::Project& project, const model::MaterialTable& library,
                         const model::Design& design, const FieldGrid& grid) {
    const model::Variables variables = SolvedVariables(design);
    SolverCopies copies;
    const FieldModel fieldModel =
        BuildFieldModel(project, library, design, variables, copies, [](model::Severity, const std::string&) {});
    return WriteVtu(MakeGrid(grid, fieldModel.bodies), solver::FieldEvaluator(fieldModel.bodies));
}

} // namespace vantor::analysis

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
    Eigen::Vector3d origin;
    double spacing = 0.0;
    std::array<int, 3> cells{};

    std::size_t PointCount() const {
        return static_cast<std::size_t>(cells[0] + 1) * static_cast<std::size_t>(cells[1] + 1) *
               static_cast<std::size_t>(cells[2] + 1);
    }

    std::size_t CellCount() const {
        return static_cast<std::size_t>(cells[0]) * static_cast<std::size_t>(cells[1]) *
               static_cast<std::size_t>(cells[2]);
    }

    template <typename Visit>
    void ForEachPoint(Visit visit) const {
        for (int k = 0; k <= cells[2]; ++k) {
            for (int j = 0; j <= cells[1]; ++j) {
                for (int i = 0; i <= cells[0]; ++i) {
                    visit(Eigen::Vector3d(origin + spacing * Eigen::Vector3d(i, j, k)));
                }
            }
        }
    }

    int PointNumber(int i, int j, int k) const { return (k * (cells[1] + 1) + j) * (cells[0] + 1) + i; }
};

Grid GridAround(const std::vector<solver::Body>& bodies) {
    model::Box box;
    for (const auto& body : bodies) {
        for (const auto& magnet : body.magnets) {
            for (const auto& vertex : magnet.mesh.vertices) {
                box.Add(vertex);
            }
        }
    }
    if (box.IsEmpty()) {
        throw model::DesktopError(model::ErrorCode::SolutionError, "the design has no magnets");
    }
    const Eigen::Vector3d margin = Eigen::Vector3d::Constant(0.5 * (box.upper - box.lower).maxCoeff());
    const Eigen::Vector3d size = box.upper - box.lower + 2.0 * margin;
    Grid grid;
    grid.origin = box.lower - margin;
    grid.spacing = size.maxCoeff() / cellsAlongLongestSide;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        grid.cells[axis] =
            std::max(1, static_cast<int>(std::ceil(size[static_cast<Eigen::Index>(axis)] / grid.spacing - 1e-9)));
    }
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

std::string FieldText(const Grid& grid, const solver::FieldEvaluator& field) {
    std::string text;
    grid.ForEachPoint([&](const Eigen::Vector3d& point) { AppendVector(text, field.H(point)); });
    return text;
}

/// Hexahedra (VTK cell type 12) with their corners in VTK's order.
std::string CellsText(const Grid& grid) {
    std::string corners;
    for (int k = 0; k < grid.cells[2]; ++k) {
        for (int j = 0; j < grid.cells[1]; ++j) {
            for (int i = 0; i < grid.cells[0]; ++i) {
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
    text += "<PointData Vectors=\"H\">\n" +
            DataArray("type=\"Float64\" Name=\"H\" NumberOfComponents=\"3\"", FieldText(grid, field)) +
            "</PointData>\n";
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
                         const model::Design& design) {
    const model::Variables variables = SolvedVariables(design);
    const FieldModel fieldModel =
        BuildFieldModel(project, library, design, variables, [](model::Severity, const std::string&) {});
    return WriteVtu(GridAround(fieldModel.bodies), solver::FieldEvaluator(fieldModel.bodies));
}

} // namespace vantor::analysis

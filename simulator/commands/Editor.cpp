#include "simulator/commands/Editor.h"

#include "simulator/commands/BlockReader.h"
#include "simulator/commands/DesignBound.h"
#include "simulator/commands/GeometryHandle.h"
#include "simulator/commands/Requirements.h"
#include "simulator/model/DesktopError.h"
#include "simulator/model/Files.h"
#include "simulator/model/GeometryFile.h"
#include "simulator/model/Text.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>

namespace vantor::commands {
namespace {

using model::DesktopError;
using model::ErrorCode;
using model::Quoted;

constexpr const char* unusedThickness = "nan ";

/// Reads "NAME:Selections" of Move and Rotate: one object's name, or several with commas between them.
std::vector<std::string> ReadSelections(const Value::List& elements, const model::Modeler& modeler) {
    BlockReader block(elements, "argument 1", "Selections");
    const std::string& selection = block.Text("Selections:=");
    block.Literal("NewPartsModelFlag:=", "Model");
    block.End();
    std::vector<std::string> names =
        modeler.HasObject(selection) ? std::vector<std::string>{selection} : model::Split(selection, ',');
    for (const auto& name : names) {
        modeler.RequireObject(name);
    }
    return names;
}

std::array<std::string, 3> ReadTriple(BlockReader& block, const char* prefix, const char* x, const char* y,
                                      const char* z) {
    std::array<std::string, 3> texts;
    const std::array<const char*, 3> suffixes = {x, y, z};
    for (std::size_t i = 0; i < 3; ++i) {
        texts[i] = block.Text(std::string(prefix) + suffixes[i]);
    }
    return texts;
}

model::CoordinateSystem ReadFrame(Arguments& arguments) {
    model::CoordinateSystem system;
    BlockReader parameters(arguments.List(), "argument 1", "RelativeCSParameters");
    parameters.Literal("Mode:=", "Axis/Position");
    if (parameters.NextIs("Reference CS:=")) {
        system.reference = parameters.Text("Reference CS:=");
    }
    system.origin = ReadTriple(parameters, "Origin", "X:=", "Y:=", "Z:=");
    system.xAxis = ReadTriple(parameters, "XAxis", "Xvec:=", "Yvec:=", "Zvec:=");
    system.yAxis = ReadTriple(parameters, "YAxis", "Xvec:=", "Yvec:=", "Zvec:=");
    parameters.End();
    BlockReader attributes(arguments.List(), "argument 2", "Attributes");
    system.name = attributes.Text("Name:=");
    attributes.End();
    return system;
}

std::array<std::string, 6> ReadPadding(const Value::List& elements) {
    BlockReader block(elements, "argument 1", "RegionParameters");
    std::array<std::string, 6> padding;
    std::size_t side = 0;
    for (const char* name : {"+X", "-X", "+Y", "-Y", "+Z", "-Z"}) {
        block.Literal(std::string(name) + "PaddingType:=", "Percentage Offset");
        padding[side++] = block.Text(std::string(name) + "Padding:=");
    }
    block.End();
    return padding;
}

/// Reads what AssignMaterial and CreateRegion share at the end of their attributes; returns "SolveInside:=".
bool ReadMaterialFlags(BlockReader& block) {
    const bool solveInside = block.Flag("SolveInside:=");
    block.Literal("ShellElement:=", false);
    block.Literal("ShellElementThickness:=", unusedThickness);
    block.Flag("IsMaterialEditable:=");
    block.Flag("UseMaterialAppearance:=");
    block.Literal("IsLightweight:=", false);
    block.End();
    return solveInside;
}

/// "(143 175 143)".
void CheckColor(const std::string& color, const std::string& location) {
    const bool enclosed = color.size() > 2 && color.front() == '(' && color.back() == ')';
    const auto parts = model::Split(enclosed ? color.substr(1, color.size() - 2) : "", ' ');
    bool valid = enclosed && parts.size() == 3;
    for (const auto& part : parts) {
        double value = -1.0;
        valid = valid && model::ParseNumber(part, value) && value >= 0.0 && value <= 255.0;
    }
    if (!valid) {
        FailBadValue(location + ": a color is written as in \"(143 175 143)\", not " + Quoted(color));
    }
}

/// The 3D modeler of a design.
class Editor : public DesignBound {
public:
    Editor(SessionPointer session, DesignReference design)
        : DesignBound(methods, std::move(session), std::move(design)) {}

private:
    static const MethodTable methods;

    model::Modeler& RequireModeler() const { return RequireDesign().modeler; }

    Value GetChildNames(Arguments& arguments) {
        arguments.End();
        return Value::Texts(RequireModeler().Names());
    }

    Value GetChildObject(Arguments& arguments) {
        const std::string& name = arguments.Text();
        arguments.End();
        if (!RequireModeler().IsRegion(name)) {
            RequireModeler().RequireObject(name);
        }
        return MakeGeometryHandle(SharedSession(), SharedDesign(), name);
    }

    Value SetModelUnits(Arguments& arguments) {
        BlockReader block(arguments.List(), "argument 1", "Units Parameter");
        const std::string& units = block.Text("Units:=");
        const bool rescale = block.Flag("Rescale:=");
        block.End();
        arguments.End();
        RequireModeler().SetUnits(units, rescale);
        MarkModelChanged();
        return {};
    }

    Value Import(Arguments& arguments) {
        BlockReader block(arguments.List(), "argument 1", "NativeBodyParameters");
        const bool useMaterials = block.Flag("ImportMaterialNames:=");
        const std::string& file = block.Text("SourceFile:=");
        block.End();
        arguments.End();
        const auto start = std::chrono::steady_clock::now();
        model::ImportedGeometry geometry;
        try {
            geometry = model::ReadGeometryFile(model::PathFromUtf8(file));
        } catch (const model::GeometryFileError& error) {
            throw DesktopError(ErrorCode::ReadFile, error.what());
        }
        const auto kept = RequireModeler().Import(geometry, useMaterials);
        ReportImport(geometry, kept, useMaterials);
        ReportLongImport(file, geometry, std::chrono::steady_clock::now() - start);
        MarkModelChanged();
        return {};
    }

    void ReportLongImport(const std::string& file, const model::ImportedGeometry& geometry,
                          std::chrono::duration<double> time) const {
        if (time < TheDesktop().longImport) {
            return;
        }
        std::size_t triangles = 0;
        for (const auto& solid : geometry.solids) {
            triangles += solid.mesh.triangles.size();
        }
        const std::size_t objects = geometry.solids.size();
        Report(model::Severity::Info, "Import: " + Quoted(file) + " took " +
                                          model::FormatNumber(std::round(10.0 * time.count()) / 10.0) +
                                          " s: " + std::to_string(triangles) + " triangles in " +
                                          std::to_string(objects) + (objects == 1 ? " object" : " objects"));
    }

    void ReportImport(const model::ImportedGeometry& geometry, const std::vector<std::string>& kept,
                      bool useMaterials) const {
        for (const auto& warning : geometry.warnings) {
            Report(model::Severity::Warning, "Import: " + warning);
        }
        if (!kept.empty()) {
            Report(model::Severity::Info,
                   "Import: these objects are there already and stay as they are: " + model::QuotedList(kept));
        }
        for (const auto& solid : geometry.solids) {
            const bool isKept = std::find(kept.begin(), kept.end(), solid.name) != kept.end();
            if (useMaterials && !isKept && !solid.material.empty() &&
                !RequireProject().FindMaterial(solid.material, TheDesktop().library)) {
                Report(model::Severity::Warning, "Import: object " + Quoted(solid.name) + " keeps its material " +
                                                     Quoted(solid.material) + ", which the library does not know");
            }
        }
    }

    /// A region of the same name is replaced, so that an opened project can be initialised again.
    Value CreateRegion(Arguments& arguments) {
        model::Region region;
        region.padding = ReadPadding(arguments.List());
        ReadRegionAttributes(BlockReader(arguments.List(), "argument 2", "Attributes"), region);
        arguments.End();
        if (RequireModeler().SetRegion(region, RequireDesign().variables)) {
            Report(model::Severity::Info, "CreateRegion: the region " + Quoted(region.name) + " has been replaced");
        }
        MarkModelChanged();
        return {};
    }

    void ReadRegionAttributes(BlockReader block, model::Region& region) const {
        region.name = block.Text("Name:=");
        if (region.name.empty()) {
            FailBadValue(block.LocationOf("Name:=") + ": a region needs a name");
        }
        block.Text("Flags:=");
        region.color = block.Text("Color:=");
        CheckColor(region.color, block.LocationOf("Color:="));
        region.transparency = block.Number("Transparency:=");
        if (region.transparency < 0.0 || region.transparency > 1.0) {
            FailBadValue(block.LocationOf("Transparency:=") + " must lie between 0 and 1");
        }
        block.Literal("PartCoordinateSystem:=", model::globalFrame);
        block.Literal("UDMId:=", "");
        region.material = RequireQuoted(block.Text("MaterialValue:="), block.LocationOf("MaterialValue:="));
        CheckRegionMaterial(region.material);
        block.Literal("SurfaceMaterialValue:=", "\"\"");
        region.solveInside = ReadMaterialFlags(block);
    }

    void CheckRegionMaterial(const std::string& name) const {
        if (RequireProjectMaterial(name).coercivity) {
            FailBadValue("a region cannot be made of the magnet material " + Quoted(name));
        }
    }

    Value GetRelativeCoordinateSystems(Arguments& arguments) {
        arguments.End();
        return Value::Texts(model::NamesOf(RequireModeler().CoordinateSystems()));
    }

    Value CreateRelativeCS(Arguments& arguments) {
        const model::CoordinateSystem system = ReadFrame(arguments);
        arguments.End();
        RequireModeler().AddCoordinateSystem(system, RequireDesign().variables);
        MarkModelChanged();
        return {};
    }

    Value SetWCS(Arguments& arguments) {
        BlockReader block(arguments.List(), "argument 1", "SetWCS Parameter");
        const std::string& name = block.Text("Working Coordinate System:=");
        block.Flag("RegionDepCSOk:=");
        block.End();
        arguments.End();
        RequireModeler().SetWorkingFrame(name);
        MarkChanged();
        return {};
    }

    Value Move(Arguments& arguments) {
        const auto names = ReadSelections(arguments.List(), RequireModeler());
        BlockReader block(arguments.List(), "argument 2", "TranslateParameters");
        const auto texts = ReadTriple(block, "TranslateVector", "X:=", "Y:=", "Z:=");
        block.End();
        arguments.End();
        Eigen::Vector3d shift;
        try {
            for (std::size_t i = 0; i < 3; ++i) {
                shift[static_cast<Eigen::Index>(i)] = model::EvaluateLength(
                    texts[i], RequireDesign().variables.Lookup(), RequireModeler().MetresPerUnit());
            }
            for (const auto& name : names) {
                RequireModeler().Move(name, shift, RequireDesign().variables);
            }
        } catch (const model::ExpressionError& error) {
            FailBadValue(error.what());
        }
        MarkModelChanged();
        return {};
    }

    Value Rotate(Arguments& arguments) {
        const auto names = ReadSelections(arguments.List(), RequireModeler());
        BlockReader block(arguments.List(), "argument 2", "RotateParameters");
        const std::string& axis = block.Text("RotateAxis:=");
        RequireOneOf(axis, {"X", "Y", "Z"}, block.LocationOf("RotateAxis:="));
        const std::string& angleText = block.Text("RotateAngle:=");
        block.End();
        arguments.End();
        try {
            const double angle = model::EvaluateAngle(angleText, RequireDesign().variables.Lookup());
            for (const auto& name : names) {
                RequireModeler().Rotate(name, axis.front() - 'X', angle, RequireDesign().variables);
            }
        } catch (const model::ExpressionError& error) {
            FailBadValue(error.what());
        }
        MarkModelChanged();
        return {};
    }

    Value AssignMaterial(Arguments& arguments) {
        BlockReader selections(arguments.List(), "argument 1", "Selections");
        model::GeometryObject& object = RequireModeler().RequireObject(selections.Text("Selections:="));
        selections.Flag("AllowRegionDependentPartSelectionForPMLCreation:=");
        selections.Flag("AllowRegionSelectionForPMLCreation:=");
        selections.End();
        BlockReader attributes(arguments.List(), "argument 2", "Attributes");
        const std::string name =
            RequireQuoted(attributes.Text("MaterialValue:="), attributes.LocationOf("MaterialValue:="));
        const bool solveInside = ReadMaterialFlags(attributes);
        arguments.End();
        object.material = RequireProjectMaterial(name).name;
        object.solveInside = solveInside;
        MarkModelChanged();
        return {};
    }

    /// There is no view to fit.
    Value FitAll(Arguments& arguments) {
        arguments.End();
        RequireDesign();
        return {};
    }
};

const ScriptObject::MethodTable Editor::methods = {
    {"GetChildNames", Bound<&Editor::GetChildNames>::Handle},
    {"GetChildObject", Bound<&Editor::GetChildObject>::Handle},
    {"SetModelUnits", Bound<&Editor::SetModelUnits>::Handle},
    {"Import", Bound<&Editor::Import>::Handle},
    {"CreateRegion", Bound<&Editor::CreateRegion>::Handle},
    {"GetRelativeCoordinateSystems", Bound<&Editor::GetRelativeCoordinateSystems>::Handle},
    {"CreateRelativeCS", Bound<&Editor::CreateRelativeCS>::Handle},
    {"SetWCS", Bound<&Editor::SetWCS>::Handle},
    {"Move", Bound<&Editor::Move>::Handle},
    {"Rotate", Bound<&Editor::Rotate>::Handle},
    {"AssignMaterial", Bound<&Editor::AssignMaterial>::Handle},
    {"FitAll", Bound<&Editor::FitAll>::Handle},
};

} // namespace

Value::Object MakeEditor(SessionPointer session, DesignReference design) {
    return std::make_shared<Editor>(std::move(session), std::move(design));
}

} // namespace vantor::commands

#include "comutils/ModelerCommands.h"

#include "comutils/Names.h"

namespace ModelerCommands {
namespace {

CValue RegionPadding() {
    constexpr char relative[] = "Percentage Offset";
    const auto& [x, y, z] = Names::regionPaddings;
    // clang-format off
    return {"NAME:RegionParameters",
            "+XPaddingType:=", relative, "+XPadding:=", x,
            "-XPaddingType:=", relative, "-XPadding:=", x,
            "+YPaddingType:=", relative, "+YPadding:=", y,
            "-YPaddingType:=", relative, "-YPadding:=", y,
            "+ZPaddingType:=", relative, "+ZPadding:=", z,
            "-ZPaddingType:=", relative, "-ZPadding:=", z};
    // clang-format on
}

CValue RegionAttributes() {
    // clang-format off
    return {"NAME:Attributes",
            "Name:=", "OuterRegion",
            "Flags:=", "Wireframe#",
            "Color:=", "(143 175 143)",
            "Transparency:=", 0.0,
            "PartCoordinateSystem:=", Names::globalFrame,
            "UDMId:=", "",
            "MaterialValue:=", Names::quotedVacuum,
            "SurfaceMaterialValue:=", "\"\"",
            "SolveInside:=", true,
            "ShellElement:=", false,
            "ShellElementThickness:=", Names::noThickness,
            "IsMaterialEditable:=", true,
            "UseMaterialAppearance:=", false,
            "IsLightweight:=", false};
    // clang-format on
}

} // namespace

bool SetModelUnits(IDispatch* editor, std::string_view units) {
    return Dispatch::Call(editor, L"SetModelUnits", {{"NAME:Units Parameter", "Units:=", units, "Rescale:=", false}});
}

bool Import(IDispatch* editor, std::string_view sourceFile) {
    return Dispatch::Call(editor, L"Import",
                          {{"NAME:NativeBodyParameters", "ImportMaterialNames:=", true, "SourceFile:=", sourceFile}});
}

bool CreateRegion(IDispatch* editor) {
    return Dispatch::Call(editor, L"CreateRegion", {RegionPadding(), RegionAttributes()});
}

bool FitAll(IDispatch* editor) {
    return Dispatch::Call(editor, L"FitAll", {});
}

} // namespace ModelerCommands

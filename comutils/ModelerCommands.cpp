#include "comutils/ComUtils.h"
#include "comutils/Dispatch.h"

namespace {

CValue RegionPadding() {
    constexpr char relative[] = "Percentage Offset";
    constexpr char x[] = "RegionPaddingX", y[] = "RegionPaddingY", z[] = "RegionPaddingZ";
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
            "PartCoordinateSystem:=", "Global",
            "UDMId:=", "",
            "MaterialValue:=", "\"vacuum\"",
            "SurfaceMaterialValue:=", "\"\"",
            "SolveInside:=", true,
            "ShellElement:=", false,
            "ShellElementThickness:=", "nan ",
            "IsMaterialEditable:=", true,
            "UseMaterialAppearance:=", false,
            "IsLightweight:=", false};
    // clang-format on
}

} // namespace

bool CComUtils::CallSetModelUnits(IDispatch* editor, const std::string& units) {
    return Dispatch::Call(editor, L"SetModelUnits", {{"NAME:Units Parameter", "Units:=", units, "Rescale:=", false}});
}

bool CComUtils::CallImport(IDispatch* editor, const std::string& sourceFile) {
    return Dispatch::Call(editor, L"Import",
                          {{"NAME:NativeBodyParameters", "ImportMaterialNames:=", true, "SourceFile:=", sourceFile}});
}

bool CComUtils::CallAssignRegion(IDispatch* editor) {
    return Dispatch::Call(editor, L"CreateRegion", {RegionPadding(), RegionAttributes()});
}

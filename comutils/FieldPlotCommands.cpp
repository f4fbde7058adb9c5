#include "comutils/FieldPlotCommands.h"

#include "comutils/Names.h"

namespace FieldPlotCommands {
namespace {

CValue VolumeOf(const std::vector<std::string>& objects) {
    CListBuilder volume(4 + objects.size());
    volume.Add(1.0);
    volume.Add("Volume");
    volume.Add("ObjList");
    volume.Add(static_cast<double>(objects.size()));
    for (const std::string& name : objects) {
        volume.Add(name);
    }
    return volume.Finish();
}

CValue VolumeSettings() {
    // clang-format off
    return {"NAME:PlotOnVolumeSettings",
            "PlotIsoSurface:=", true,
            "PointSize:=", 1.0,
            "Refinement:=", 0.0,
            "CloudSpacing:=", 0.5,
            "CloudMinSpacing:=", -1.0,
            "CloudMaxSpacing:=", -1.0,
            "ShadingType:=", 0.0,
            {"NAME:Arrow3DSpacingSettings",
             "ArrowUniform:=", true,
             "ArrowSpacing:=", 0.0,
             "MinArrowSpacing:=", 0.0,
             "MaxArrowSpacing:=", 0.0}};
    // clang-format on
}

} // namespace

bool CreateFieldPlot(IDispatch* module, std::string_view plot, std::string_view folder, const std::string& setup,
                     std::string_view quantity, const std::vector<std::string>& objects) {
    // clang-format off
    return Dispatch::Call(module, L"CreateFieldPlot",
        {{Names::Block(plot),
          "SolutionName:=", Names::Solution(setup),
          "UserSpecifyName:=", 0.0,
          "UserSpecifyFolder:=", 0.0,
          "QuantityName:=", quantity,
          "PlotFolder:=", folder,
          "StreamlinePlot:=", false,
          "AdjacentSidePlot:=", false,
          "FullModelPlot:=", false,
          "IntrinsicVar:=", "",
          "EnableGaussianSmoothing:=", false, // stands twice: for the geometry and for the volume
          "PlotGeomInfo:=", VolumeOf(objects),
          "FilterBoxes:=", {0.0},
          VolumeSettings(),
          "EnableGaussianSmoothing:=", false,
          "SurfaceOnly:=", false},
         "Field"});
    // clang-format on
}

} // namespace FieldPlotCommands

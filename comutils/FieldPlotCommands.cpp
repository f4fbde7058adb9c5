#include "comutils/ComUtils.h"
#include "comutils/Dispatch.h"
#include "comutils/Names.h"

namespace {

CValue VolumeOf(const std::vector<std::string>& objectNames) {
    CListBuilder volume(4 + objectNames.size());
    volume.Add(1.0);
    volume.Add("Volume");
    volume.Add("ObjList");
    volume.Add(static_cast<double>(objectNames.size()));
    for (const std::string& name : objectNames)
        volume.Add(name);
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

bool CComUtils::CreateFieldPlot(IDispatch* fieldsModule, const std::string& plotName, const std::string& plotFolder,
                                const std::string& setupName, const std::string& quantityName,
                                const std::vector<std::string>& objectNames) {
    // clang-format off
    return Dispatch::Call(fieldsModule, L"CreateFieldPlot",
        {{Names::Block(plotName),
          "SolutionName:=", Names::Solution(setupName),
          "UserSpecifyName:=", 0.0,
          "UserSpecifyFolder:=", 0.0,
          "QuantityName:=", quantityName,
          "PlotFolder:=", plotFolder,
          "StreamlinePlot:=", false,
          "AdjacentSidePlot:=", false,
          "FullModelPlot:=", false,
          "IntrinsicVar:=", "",
          "EnableGaussianSmoothing:=", false, // stands twice: for the geometry and for the volume
          "PlotGeomInfo:=", VolumeOf(objectNames),
          "FilterBoxes:=", {0.0},
          VolumeSettings(),
          "EnableGaussianSmoothing:=", false,
          "SurfaceOnly:=", false},
         "Field"});
    // clang-format on
}

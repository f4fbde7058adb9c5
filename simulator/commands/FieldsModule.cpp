#include "simulator/commands/FieldsModule.h"

#include "simulator/commands/BlockReader.h"
#include "simulator/commands/DesignBound.h"
#include "simulator/commands/Requirements.h"
#include "simulator/model/DesktopError.h"
#include "simulator/model/Text.h"

namespace vantor::commands {
namespace {

using model::DesktopError;
using model::Quoted;

/// The module "FieldsReporter".
class FieldsModule : public DesignBound {
public:
    FieldsModule(SessionPointer session, DesignReference design)
        : DesignBound(methods, std::move(session), std::move(design)) {}

private:
    static const MethodTable methods;

    /// A plot of the same name is replaced, so that an opened project can be initialised again.
    Value CreateFieldPlot(Arguments& arguments) {
        const model::FieldPlot plot = ReadPlot(BlockReader(arguments.List(), "argument 1"));
        arguments.Literal("Field");
        arguments.End();
        if (plot.name.empty()) {
            FailBadValue("argument 1: a field plot needs a name");
        }
        model::RequireSetupOfSolution(RequireDesign(), plot.solution);
        if (model::FieldPlot* present = model::FindByName(RequireDesign().fieldPlots, plot.name)) {
            *present = plot;
            Report(model::Severity::Info, "CreateFieldPlot: the plot " + Quoted(plot.name) + " has been replaced");
        } else {
            RequireDesign().fieldPlots.push_back(plot);
        }
        MarkChanged();
        return {};
    }

    model::FieldPlot ReadPlot(BlockReader block) const {
        model::FieldPlot plot;
        plot.name = block.Name();
        plot.solution = block.Text("SolutionName:=");
        block.Literal("UserSpecifyName:=", 0.0);
        block.Literal("UserSpecifyFolder:=", 0.0);
        plot.quantity = block.Text("QuantityName:=");
        RequireOneOf(plot.quantity, {"H_Vector", "B_Vector"}, block.LocationOf("QuantityName:="));
        plot.folder = block.Text("PlotFolder:=");
        block.Flag("StreamlinePlot:=");
        block.Flag("AdjacentSidePlot:=");
        block.Flag("FullModelPlot:=");
        block.Literal("IntrinsicVar:=", "");
        block.Flag("EnableGaussianSmoothing:=");
        plot.objects = ReadGeometry(block.List("PlotGeomInfo:="));
        ReadFilter(block.List("FilterBoxes:="));
        ReadVolumeSettings(block.Block("PlotOnVolumeSettings"));
        block.Flag("EnableGaussianSmoothing:=");
        block.Flag("SurfaceOnly:=");
        block.End();
        return plot;
    }

    std::vector<std::string> ReadGeometry(const Value::List& elements) const {
        const std::string location = "\"PlotGeomInfo:=\"";
        Arguments fields(elements);
        try {
            const double kinds = fields.Number();
            fields.Literal("Volume");
            fields.Literal("ObjList");
            const double count = fields.Number();
            if (kinds != 1.0 || count != static_cast<double>(elements.size()) - 4.0) {
                FailBadValue("1 and the number of objects that follow are needed");
            }
            std::vector<std::string> objects;
            for (std::size_t i = 4; i < elements.size(); ++i) {
                objects.push_back(fields.Text());
                RequireDesign().modeler.RequireObject(objects.back());
            }
            return objects;
        } catch (const DesktopError& error) {
            throw DesktopError(error.Code(), location + ": " + error.what());
        }
    }

    static void ReadFilter(const Value::List& elements) {
        if (elements.size() != 1 || RequireNumber(elements[0], "\"FilterBoxes:=\"") != 0.0) {
            FailBadValue("\"FilterBoxes:=\": filter boxes are not supported, the single number 0 is needed");
        }
    }

    static void ReadVolumeSettings(BlockReader block) {
        block.Flag("PlotIsoSurface:=");
        block.Number("PointSize:=");
        block.Number("Refinement:=");
        block.Number("CloudSpacing:=");
        block.Number("CloudMinSpacing:=");
        block.Number("CloudMaxSpacing:=");
        block.Number("ShadingType:=");
        BlockReader arrows = block.Block("Arrow3DSpacingSettings");
        arrows.Flag("ArrowUniform:=");
        arrows.Number("ArrowSpacing:=");
        arrows.Number("MinArrowSpacing:=");
        arrows.Number("MaxArrowSpacing:=");
        arrows.End();
        block.End();
    }
};

const ScriptObject::MethodTable FieldsModule::methods = {
    {"CreateFieldPlot", Bound<&FieldsModule::CreateFieldPlot>::Handle},
};

} // namespace

Value::Object MakeFieldsModule(SessionPointer session, DesignReference design) {
    return std::make_shared<FieldsModule>(std::move(session), std::move(design));
}

} // namespace vantor::commands

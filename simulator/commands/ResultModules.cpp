#include "simulator/commands/BoundObjects.h"
#include "simulator/model/Files.h"
#include "simulator/model/ReportData.h"
#include "simulator/model/Text.h"

#include <algorithm>
#include <set>
#include <tuple>

namespace vantor::commands {
namespace {

using model::DesktopError;
using model::ErrorCode;
using model::Quoted;

constexpr const char* magnetostatic = "Magnetostatic";
constexpr const char* parametricSetup = "parametric setup";

/// The module "ReportSetup".
class ReportModule : public DesignBound {
public:
    using DesignBound::DesignBound;

    const char* Kind() const override { return "ReportSetup module"; }

private:
    const std::vector<Method>& Methods() const override {
        static const std::vector<Method> methods = {
            {"CreateReport", Bound<&ReportModule::CreateReport>::Handle},
            {"GetReportTraceNames", Bound<&ReportModule::GetReportTraceNames>::Handle},
            {"DeleteTraces", Bound<&ReportModule::DeleteTraces>::Handle},
            {"ImportIntoReport", Bound<&ReportModule::ImportIntoReport>::Handle},
        };
        return methods;
    }

    model::Report& FindReport(const std::string& name) const { return NeedNamed(TheDesign().reports, name, "report"); }

    /// A report that is there already stays with its traces when it is defined in the same way, so that an opened
    /// project can be initialised again.
    void KeepPresent(const model::Report& present, const model::Report& wanted) const {
        const auto definition = [](const model::Report& report) {
            return std::tie(report.reportType, report.displayType, report.solution, report.families, report.xComponent,
                            report.yComponents);
        };
        if (definition(present) != definition(wanted)) {
            FailBadValue("a report named " + Quoted(wanted.name) + " exists already and is defined otherwise");
        }
        Report(model::Severity::Info, "CreateReport: the report " + Quoted(wanted.name) + " is there already");
    }

    Value CreateReport(Arguments& arguments) {
        model::Report report;
        report.name = arguments.Text();
        report.reportType = arguments.Text();
        NeedOneOf(report.reportType, {magnetostatic}, "argument 2");
        report.displayType = arguments.Text();
        NeedOneOf(report.displayType, {"Rectangular Plot", "Data Table"}, "argument 3");
        report.solution = arguments.Text();
        if (!arguments.Any().IsEmpty()) {
            FailBadValue("argument 5: a context is not supported, nothing (VT_EMPTY) is needed");
        }
        report.families = ReadFamilies(arguments.List());
        ReadComponents(arguments.List(), report);
        arguments.End();
        model::SetupOfSolution(TheDesign(), report.solution);
        if (report.name.empty()) {
            FailBadValue("argument 1: a report needs a name");
        }
        if (const model::Report* present = model::FindByName(TheDesign().reports, report.name)) {
            KeepPresent(*present, report);
            return {};
        }
        TheDesign().reports.push_back(report);
        MarkChanged();
        return {};
    }

    void NeedVariable(const std::string& name, const std::string& place) const {
        if (!TheDesign().variables.Has(name)) {
            FailBadValue(place + ": there is no variable " + Quoted(name));
        }
    }

    std::vector<std::pair<std::string, std::vector<std::string>>> ReadFamilies(const Value::List& elements) const {
        std::vector<std::pair<std::string, std::vector<std::string>>> families;
        std::set<std::string> seen;
        for (const auto& [variable, value] : ReadPairs(elements, "argument 6")) {
            const std::string place = "argument 6, " + Quoted(variable + ":=");
            NeedVariable(variable, place);
            if (!seen.insert(variable).second) {
                FailBadValue(place + " stands there twice");
            }
            families.emplace_back(variable, NeedTexts(*value, place));
            if (families.back().second.empty()) {
                FailBadValue(place + ": \"All\", \"Nominal\" or values are needed");
            }
        }
        return families;
    }

    void ReadComponents(const Value::List& elements, model::Report& report) const {
        const auto pairs = ReadPairs(elements, "argument 7");
        if (pairs.size() != 2 || pairs[0].first != "X Component" || pairs[1].first != "Y Component") {
            throw DesktopError(ErrorCode::InvalidArgument,
                               "argument 7: \"X Component:=\" and \"Y Component:=\" are needed, in this order");
        }
        report.xComponent = NeedText(*pairs[0].second, "argument 7, \"X Component:=\"");
        NeedVariable(report.xComponent, "argument 7, \"X Component:=\"");
        report.yComponents = NeedTexts(*pairs[1].second, "argument 7, \"Y Component:=\"");
        for (const auto& name : report.yComponents) {
            if (model::FindByName(TheDesign().outputVariables, name) == nullptr) {
                FailBadValue("argument 7, \"Y Component:=\": there is no output variable " + Quoted(name));
            }
        }
    }

    Value GetReportTraceNames(Arguments& arguments) {
        const std::string& name = arguments.Text();
        arguments.End();
        return Value::Texts(model::NamesOf(FindReport(name).traces));
    }

    Value DeleteTraces(Arguments& arguments) {
        const Value::List& list = arguments.List();
        arguments.End();
        const auto pairs = ReadPairs(list, "argument 1");
        for (const auto& [name, traces] : pairs) {
            for (const auto& trace : NeedTexts(*traces, "argument 1, " + Quoted(name + ":="))) {
                if (model::FindByName(FindReport(name).traces, trace) == nullptr) {
                    FailBadValue("the report " + Quoted(name) + " has no trace " + Quoted(trace));
                }
            }
        }
        for (const auto& [name, value] : pairs) {
            EraseNamed(FindReport(name).traces, NeedTexts(*value, "argument 1"));
        }
        MarkChanged();
        return {};
    }

    Value ImportIntoReport(Arguments& arguments) {
        const std::string& name = arguments.Text();
        const std::string& file = arguments.Text();
        arguments.End();
        model::Report& report = FindReport(name);
        std::vector<model::Trace> traces = model::ReadTraceFile(model::PathFromUtf8(file));
        for (const auto& trace : traces) {
            if (model::FindByName(report.traces, trace.name) != nullptr) {
                FailBadValue("the report " + Quoted(name) + " has a trace " + Quoted(trace.name) + " already");
            }
        }
        std::move(traces.begin(), traces.end(), std::back_inserter(report.traces));
        MarkChanged();
        return {};
    }
};

/// The module "FieldsReporter".
class FieldsModule : public DesignBound {
public:
    using DesignBound::DesignBound;

    const char* Kind() const override { return "FieldsReporter module"; }

private:
    const std::vector<Method>& Methods() const override {
        static const std::vector<Method> methods = {
            {"CreateFieldPlot", Bound<&FieldsModule::CreateFieldPlot>::Handle},
        };
        return methods;
    }

    /// A plot of the same name is replaced, so that an opened project can be initialised again.
    Value CreateFieldPlot(Arguments& arguments) {
        const model::FieldPlot plot = ReadPlot(BlockReader(arguments.List(), "argument 1"));
        arguments.Literal("Field");
        arguments.End();
        if (plot.name.empty()) {
            FailBadValue("argument 1: a field plot needs a name");
        }
        model::SetupOfSolution(TheDesign(), plot.solution);
        if (model::FieldPlot* present = model::FindByName(TheDesign().fieldPlots, plot.name)) {
            *present = plot;
            Report(model::Severity::Info, "CreateFieldPlot: the plot " + Quoted(plot.name) + " has been replaced");
        } else {
            TheDesign().fieldPlots.push_back(plot);
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
        NeedOneOf(plot.quantity, {"H_Vector", "B_Vector"}, block.PlaceOf("QuantityName:="));
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
        const std::string place = "\"PlotGeomInfo:=\"";
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
                TheDesign().modeler.Object(objects.back());
            }
            return objects;
        } catch (const DesktopError& error) {
            throw DesktopError(error.Code(), place + ": " + error.what());
        }
    }

    static void ReadFilter(const Value::List& elements) {
        if (elements.size() != 1 || NeedNumber(elements[0], "\"FilterBoxes:=\"") != 0.0) {
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

/// The child "Results": the names of the reports.
class Results : public DesignBound {
public:
    using DesignBound::DesignBound;

    const char* Kind() const override { return "Results"; }

private:
    const std::vector<Method>& Methods() const override {
        static const std::vector<Method> methods = {
            {"GetChildNames", Bound<&Results::Names<&model::Design::reports>>::Handle},
        };
        return methods;
    }
};

/// The child "Paravant": the parametric setups.
class ParametricSetups : public DesignBound {
public:
    using DesignBound::DesignBound;

    const char* Kind() const override { return "Paravant"; }

private:
    const std::vector<Method>& Methods() const override {
        static const std::vector<Method> methods = {
            {"GetChildNames", Bound<&ParametricSetups::Names<&model::Design::parametricSetups>>::Handle},
            {"InsertSetup", Bound<&ParametricSetups::InsertSetup>::Handle},
            {"EditSetup", Bound<&ParametricSetups::EditSetup>::Handle},
            {"DeleteSetups", Bound<&ParametricSetups::DeleteSetups>::Handle},
        };
        return methods;
    }

    Value InsertSetup(Arguments& arguments) {
        arguments.Literal("OptiParametric");
        model::ParametricSetup setup = ReadSetup(BlockReader(arguments.List(), "argument 2"));
        arguments.End();
        if (setup.name.empty() || model::FindByName(TheDesign().parametricSetups, setup.name) != nullptr) {
            FailBadValue("a parametric setup named " + Quoted(setup.name) + " exists already, or the name is empty");
        }
        TheDesign().parametricSetups.push_back(std::move(setup));
        MarkChanged();
        return {};
    }

    Value EditSetup(Arguments& arguments) {
        const std::string& name = arguments.Text();
        model::ParametricSetup& present = NeedNamed(TheDesign().parametricSetups, name, parametricSetup);
        model::ParametricSetup setup = ReadSetup(BlockReader(arguments.List(), "argument 2", name));
        arguments.End();
        present = std::move(setup);
        MarkChanged();
        return {};
    }

    Value DeleteSetups(Arguments& arguments) {
        const std::vector<std::string> names = NeedTexts(arguments.Any(), "argument 1");
        arguments.End();
        auto& setups = TheDesign().parametricSetups;
        for (const auto& name : names) {
            NeedNamed(setups, name, parametricSetup);
        }
        EraseNamed(setups, names);
        MarkChanged();
        return {};
    }

    model::ParametricSetup ReadSetup(BlockReader block) const {
        model::ParametricSetup setup;
        setup.name = block.Name();
        setup.enabled = block.Flag("IsEnabled:=");
        BlockReader data = block.Block("ProdOptiSetupDataV2");
        setup.saveFields = data.Flag("SaveFields:=");
        setup.copyMesh = data.Flag("CopyMesh:=");
        setup.solveWithCopiedMeshOnly = data.Flag("SolveWithCopiedMeshOnly:=");
        data.End();
        BlockReader start = block.Block("StartingPoint");
        while (!start.AtEnd()) {
            setup.startingPoint.push_back(start.BareText());
        }
        setup.analysisSetups = block.Texts("Sim. Setups:=");
        WarnAboutMissingSetups(setup);
        setup.sweeps = ReadSweeps(block.Block("Sweeps"));
        setup.addedRows = ReadRows(block.Block("Sweep Operations"), setup.sweeps.size());
        block.Block("Goals").End();
        block.End();
        return setup;
    }

    void WarnAboutMissingSetups(const model::ParametricSetup& setup) const {
        for (const auto& name : setup.analysisSetups) {
            if (model::FindByName(TheDesign().setups, name) == nullptr) {
                Report(model::Severity::Warning, "the parametric setup " + Quoted(setup.name) + " names the setup " +
                                                     Quoted(name) + ", which does not exist");
            }
        }
    }

    std::vector<model::ParametricSetup::Sweep> ReadSweeps(BlockReader block) const {
        std::vector<model::ParametricSetup::Sweep> sweeps;
        const model::NameLookup lookup = TheDesign().variables.Lookup();
        while (!block.AtEnd()) {
            BlockReader entry = block.Block("SweepDefinition");
            model::ParametricSetup::Sweep sweep;
            sweep.variable = entry.Text("Variable:=");
            if (!TheDesign().variables.Has(sweep.variable)) {
                FailBadValue(entry.PlaceOf("Variable:=") + ": there is no variable " + Quoted(sweep.variable));
            }
            sweep.data = entry.Text("Data:=");
            try {
                model::Evaluate(sweep.data, lookup);
            } catch (const model::ExpressionError& error) {
                FailBadValue(entry.PlaceOf("Data:=") + ": " + error.what());
            }
            sweep.offset = entry.Flag("OffsetF1:=");
            sweep.synchronize = entry.Number("Synchronize:=");
            entry.End();
            sweeps.push_back(std::move(sweep));
        }
        return sweeps;
    }

    static std::vector<std::vector<std::string>> ReadRows(BlockReader block, std::size_t columns) {
        std::vector<std::vector<std::string>> rows;
        while (!block.AtEnd()) {
            rows.push_back(block.Texts("add:="));
            if (rows.back().size() != columns) {
                FailBadValue(block.PlaceOf("add:=") + ", row " + std::to_string(rows.size()) + ": " +
                             std::to_string(columns) + " values are needed, here are " +
                             std::to_string(rows.back().size()));
            }
        }
        return rows;
    }
};

} // namespace

Value::Object MakeReportModule(SessionPointer session, DesignPlace place) {
    return std::make_shared<ReportModule>(std::move(session), std::move(place));
}

Value::Object MakeFieldsModule(SessionPointer session, DesignPlace place) {
    return std::make_shared<FieldsModule>(std::move(session), std::move(place));
}

Value::Object MakeResults(SessionPointer session, DesignPlace place) {
    return std::make_shared<Results>(std::move(session), std::move(place));
}

Value::Object MakeParametricSetups(SessionPointer session, DesignPlace place) {
    return std::make_shared<ParametricSetups>(std::move(session), std::move(place));
}

} // namespace vantor::commands

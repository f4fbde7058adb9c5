#include "simulator/commands/ParametricSetups.h"

#include "simulator/commands/BlockReader.h"
#include "simulator/commands/DesignBound.h"
#include "simulator/commands/Requirements.h"
#include "simulator/model/Text.h"

namespace vantor::commands {
namespace {

using model::Quoted;

constexpr const char* parametricSetup = "parametric setup";

/// The child "Paravant": the parametric setups.
class ParametricSetups : public DesignBound {
public:
    ParametricSetups(SessionPointer session, DesignReference design)
        : DesignBound(methods, std::move(session), std::move(design)) {}

private:
    static const MethodTable methods;

    Value InsertSetup(Arguments& arguments) {
        arguments.Literal("OptiParametric");
        model::ParametricSetup setup = ReadSetup(BlockReader(arguments.List(), "argument 2"));
        arguments.End();
        if (setup.name.empty() || model::FindByName(RequireDesign().parametricSetups, setup.name)) {
            FailBadValue("a parametric setup named " + Quoted(setup.name) + " exists already, or the name is empty");
        }
        RequireDesign().parametricSetups.push_back(std::move(setup));
        MarkChanged();
        return {};
    }

    Value EditSetup(Arguments& arguments) {
        const std::string& name = arguments.Text();
        model::ParametricSetup& present = RequireNamed(RequireDesign().parametricSetups, name, parametricSetup);
        model::ParametricSetup setup = ReadSetup(BlockReader(arguments.List(), "argument 2", name));
        arguments.End();
        present = std::move(setup);
        MarkChanged();
        return {};
    }

    Value DeleteSetups(Arguments& arguments) {
        const std::vector<std::string> names = RequireTexts(arguments.Any(), "argument 1");
        arguments.End();
        auto& setups = RequireDesign().parametricSetups;
        for (const auto& name : names) {
            RequireNamed(setups, name, parametricSetup);
        }
        model::EraseNamed(setups, names);
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
            if (!model::FindByName(RequireDesign().setups, name)) {
                Report(model::Severity::Warning, "the parametric setup " + Quoted(setup.name) + " names the setup " +
                                                     Quoted(name) + ", which does not exist");
            }
        }
    }

    std::vector<model::ParametricSetup::Sweep> ReadSweeps(BlockReader block) const {
        std::vector<model::ParametricSetup::Sweep> sweeps;
        const model::NameLookup lookup = RequireDesign().variables.Lookup();
        while (!block.AtEnd()) {
            BlockReader entry = block.Block("SweepDefinition");
            model::ParametricSetup::Sweep sweep;
            sweep.variable = entry.Text("Variable:=");
            if (!RequireDesign().variables.Has(sweep.variable)) {
                FailBadValue(entry.LocationOf("Variable:=") + ": there is no variable " + Quoted(sweep.variable));
            }
            sweep.data = entry.Text("Data:=");
            try {
                model::Evaluate(sweep.data, lookup);
            } catch (const model::ExpressionError& error) {
                FailBadValue(entry.LocationOf("Data:=") + ": " + error.what());
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
                FailBadValue(block.LocationOf("add:=") + ", row " + std::to_string(rows.size()) + ": " +
                             std::to_string(columns) + " values are needed, here are " +
                             std::to_string(rows.back().size()));
            }
        }
        return rows;
    }
};

const ScriptObject::MethodTable ParametricSetups::methods = {
    {"GetChildNames", Bound<&ParametricSetups::Names<&model::Design::parametricSetups>>::Handle},
    {"InsertSetup", Bound<&ParametricSetups::InsertSetup>::Handle},
    {"EditSetup", Bound<&ParametricSetups::EditSetup>::Handle},
    {"DeleteSetups", Bound<&ParametricSetups::DeleteSetups>::Handle},
};

} // namespace

Value::Object MakeParametricSetups(SessionPointer session, DesignReference design) {
    return std::make_shared<ParametricSetups>(std::move(session), std::move(design));
}

} // namespace vantor::commands

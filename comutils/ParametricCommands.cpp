#include "comutils/ParametricCommands.h"

#include "comutils/Names.h"
#include "comutils/ObjectCommands.h"
#include "comutils/SetupCommands.h"

#include <iterator>

namespace ParametricCommands {
namespace {

constexpr char historySetup[] = "KinoraHistory";

using Row = std::vector<std::string>;

CValue SweepDefinitions(const std::vector<std::string>& variables, const Row& start) {
    CListBuilder sweeps(1 + variables.size());
    sweeps.Add("NAME:Sweeps");
    for (std::size_t column = 0; column < variables.size(); ++column) {
        // clang-format off
        sweeps.Add({"NAME:SweepDefinition",
                    "Variable:=", variables[column],
                    "Data:=", start[column],
                    "OffsetF1:=", false,
                    "Synchronize:=", 0.0});
        // clang-format on
    }
    return sweeps.Finish();
}

CValue AddedPoints(const std::vector<Row>& rows) {
    CListBuilder operations(1 + 2 * (rows.size() - 1));
    operations.Add("NAME:Sweep Operations");
    for (auto row = std::next(rows.begin()); row != rows.end(); ++row) {
        operations.Add("add:=");
        operations.Add(CListBuilder::OfTexts(*row));
    }
    return operations.Finish();
}

} // namespace

CValue HistoryArgument(const std::vector<std::string>& variables, const std::vector<Row>& rows) {
    if (rows.empty() || rows.front().size() < variables.size()) {
        return CValue();
    }
    // clang-format off
    return {Names::Block(historySetup),
            "IsEnabled:=", true,
            {"NAME:ProdOptiSetupDataV2",
             "SaveFields:=", true,
             "CopyMesh:=", true,
             "SolveWithCopiedMeshOnly:=", true},
            {"NAME:StartingPoint"},
            "Sim. Setups:=", {Names::defaultSetup},
            SweepDefinitions(variables, rows.front()),
            AddedPoints(rows),
            {"NAME:Goals"}};
    // clang-format on
}

bool HasHistory(IDispatch* setups) {
    return Names::Contains(ObjectCommands::ChildNames(setups), historySetup);
}

bool InsertHistory(IDispatch* setups, CValue history) {
    return SetupCommands::InsertSetup(setups, "OptiParametric", std::move(history));
}

bool EditHistory(IDispatch* setups, CValue history) {
    return SetupCommands::EditSetup(setups, historySetup, std::move(history));
}

bool DeleteHistory(IDispatch* setups) {
    return Dispatch::Call(setups, L"DeleteSetups", {{historySetup}});
}

} // namespace ParametricCommands

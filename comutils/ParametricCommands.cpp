#include "comutils/ComUtils.h"
#include "comutils/Names.h"
#include "comutils/ParametricHistory.h"

namespace {

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

CValue ParametricHistory::Argument(const std::vector<std::string>& variables, const std::vector<Row>& rows) {
    if (rows.empty() || rows.front().size() < variables.size())
        return CValue();
    // clang-format off
    return {Names::Block(setupName),
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

VARIANT CComUtils::GetParavantArgument(std::vector<std::string> variables, std::vector<Row> rows) {
    return ParametricHistory::Argument(variables, rows).Detach();
}

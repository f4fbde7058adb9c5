#include "comutils/SetupCommands.h"

#include "comutils/DesignCommands.h"
#include "comutils/Names.h"

#include <algorithm>

namespace SetupCommands {
namespace {

CObject SetupModule(IDispatch* design) {
    return DesignCommands::GetModule(design, Names::setupModule);
}

CValue CacheItems(const std::string& body) {
    const auto variables = Names::OutputVariables(body);
    CListBuilder items(1 + variables.size());
    items.Add("NAME:ExpressionCache");
    for (const auto& [name, expression] : variables) {
        // clang-format off
        items.Add({"NAME:CacheItem",
                   "Title:=", name,
                   "Expression:=", expression,
                   "ReportType:=", Names::magnetostatic,
                   {"NAME:ExpressionContext"}});
        // clang-format on
    }
    return items.Finish();
}

} // namespace

bool InsertSetup(IDispatch* setups, std::string_view type, CValue definition) {
    return Dispatch::Call(setups, L"InsertSetup", {type, std::move(definition)});
}

bool EditSetup(IDispatch* setups, std::string_view name, CValue definition) {
    return Dispatch::Call(setups, L"EditSetup", {name, std::move(definition)});
}

std::string GetFirstSetup(IDispatch* design) {
    const std::vector<std::string> names = Dispatch::QueryTexts(SetupModule(design).get(), L"GetSetups");
    return names.empty() ? std::string() : *std::min_element(names.begin(), names.end());
}

bool InsertAnalysisSetup(IDispatch* module, std::string_view name) {
    // clang-format off
    return InsertSetup(module, Names::magnetostatic,
        {Names::Block(name),
         "Enabled:=", true,
         "MaximumPasses:=", 15.0,
         "PercentError:=", 0.5});
    // clang-format on
}

bool EnsureSetup(IDispatch* design) {
    const CObject module = SetupModule(design);
    if (!module) {
        return false;
    }
    return !GetFirstSetup(design).empty() || InsertAnalysisSetup(module.get(), Names::defaultSetup);
}

bool Analyze(IDispatch* design, std::string_view setup, int& status) {
    CValue answer;
    if (!Dispatch::Call(design, L"Analyze", {setup}, answer)) {
        return false;
    }
    // The solver's code is the low half of the value, whatever the value's type.
    const VARIANT& value = answer.Get();
    if (value.vt == VT_I4 && value.iVal == 0) {
        return true;
    }
    status = value.iVal;
    return false;
}

bool InsertExpressionCaches(IDispatch* design, const std::string& body) {
    const CObject module = SetupModule(design);
    if (!module) {
        return false;
    }
    const std::string setup = GetFirstSetup(design);
    if (setup.empty()) {
        return false;
    }
    return EditSetup(module.get(), setup, {Names::Block(setup), "Enabled:=", true, CacheItems(body)});
}

} // namespace SetupCommands

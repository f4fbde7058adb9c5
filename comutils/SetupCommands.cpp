#include "comutils/ComUtils.h"
#include "comutils/Dispatch.h"
#include "comutils/Names.h"

#include <algorithm>

namespace {

CObject SetupModule(IDispatch* design) {
    return Dispatch::Own(CComUtils::CallGetModule(design, Names::setupModule));
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

std::string CComUtils::GetFirstSetup(IDispatch* design) {
    CValue setups;
    Dispatch::Call(SetupModule(design).get(), L"GetSetups", {}, setups);
    const std::vector<std::string> names = ReadStringArray(setups.Get());
    return names.empty() ? std::string() : *std::min_element(names.begin(), names.end());
}

bool CComUtils::CallInsertSetup(IDispatch* module, const std::string& name) {
    // clang-format off
    return Dispatch::Call(module, L"InsertSetup",
        {Names::magnetostatic,
         {Names::Block(name),
          "Enabled:=", true,
          "MaximumPasses:=", 15.0,
          "PercentError:=", 0.5}});
    // clang-format on
}

bool CComUtils::CheckAndInsertSetup(IDispatch* design) {
    const CObject module = SetupModule(design);
    if (!module)
        return false;
    return !GetFirstSetup(design).empty() || CallInsertSetup(module.get(), Names::defaultSetup);
}

bool CComUtils::CallAnalyze(IDispatch* design, const std::string& setupName, int& status) {
    CValue answer;
    if (!Dispatch::Call(design, L"Analyze", {setupName}, answer))
        return false;
    // The solver's code is the low half of the value, whatever the value's type.
    const VARIANT& value = answer.Get();
    if (value.vt == VT_I4 && value.iVal == 0)
        return true;
    status = value.iVal;
    return false;
}

bool CComUtils::InsertExpressionCaches(IDispatch* design, const IKinoraVeltrixInterface::Transform& transform) {
    const CObject module = SetupModule(design);
    if (!module)
        return false;
    const std::string setup = GetFirstSetup(design);
    if (setup.empty())
        return false;
    return Dispatch::Call(module.get(), L"EditSetup",
                          {setup, {Names::Block(setup), "Enabled:=", true, CacheItems(transform.name)}});
}

#include "comutils/OutputVariableCommands.h"

#include "comutils/DesignCommands.h"
#include "comutils/Names.h"

namespace OutputVariableCommands {
namespace {

CObject OutputVariableModule(IDispatch* design) {
    return DesignCommands::GetModule(design, Names::outputVariableModule);
}

bool ReadLoad(IDispatch* module, const std::string& load, const std::string& solution, double (&components)[3]) {
    for (int axis = 0; axis < 3; ++axis) {
        if (!GetOutputVariableValue(module, load + Names::axes[axis], solution, components[axis])) {
            return false;
        }
    }
    return true;
}

} // namespace

bool CreateOutputVariables(IDispatch* design, const std::string& body, const std::string& setup) {
    const CObject module = OutputVariableModule(design);
    if (!module) {
        return false;
    }
    for (const auto& [name, expression] : Names::OutputVariables(body)) {
        if (!Dispatch::Call(module.get(), L"CreateOutputVariable",
                            {name, expression, Names::Solution(setup), Names::magnetostatic, CValue::EmptyList()})) {
            return false;
        }
    }
    return true;
}

bool GetOutputVariableValue(IDispatch* module, std::string_view name, std::string_view solution, double& value) {
    CValue result;
    if (!Dispatch::Call(module, L"GetOutputVariableValue",
                        {name, "", solution, Names::magnetostatic, CValue::EmptyList()}, result)) {
        return false;
    }
    value = result.Get().dblVal;
    return true;
}

bool ReadLoads(IDispatch* design, const std::string& body, const std::string& setup,
               IKinoraVeltrixInterface::Result& result) {
    const CObject module = OutputVariableModule(design);
    if (!module) {
        return false;
    }
    const std::string solution = Names::Solution(setup);
    return ReadLoad(module.get(), Names::Force(body), solution, result.force) &&
           ReadLoad(module.get(), Names::Torque(body), solution, result.torque);
}

} // namespace OutputVariableCommands

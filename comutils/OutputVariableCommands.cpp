#include "comutils/ComUtils.h"
#include "comutils/Dispatch.h"
#include "comutils/Names.h"

namespace {

CObject OutputVariableModule(IDispatch* design) {
    return Dispatch::Own(CComUtils::CallGetModule(design, Names::outputVariableModule));
}

bool ReadValue(IDispatch* module, const std::string& name, const std::string& solution, double& value) {
    CValue result;
    if (!Dispatch::Call(module, L"GetOutputVariableValue",
                        {name, "", solution, Names::magnetostatic, CValue::EmptyList()}, result))
        return false;
    value = result.Get().dblVal;
    return true;
}

} // namespace

bool CComUtils::CreateOutputVariables(IDispatch* design, const IKinoraVeltrixInterface::Transform& transform,
                                      const std::string& setupName) {
    const CObject module = OutputVariableModule(design);
    if (!module)
        return false;
    for (const auto& [name, expression] : Names::OutputVariables(transform.name))
        if (!Dispatch::Call(module.get(), L"CreateOutputVariable",
                            {name, expression, Names::Solution(setupName), Names::magnetostatic, CValue::EmptyList()}))
            return false;
    return true;
}

bool CComUtils::CallGetOutputVariableValue(IDispatch* module, const std::string& name, const std::string& setupName,
                                           double& value) {
    return ReadValue(module, name, Names::Solution(setupName), value);
}

bool CComUtils::ExtractOutputData(IDispatch* design, const std::string& name, const std::string& setupName,
                                  IKinoraVeltrixInterface::Result& result) {
    const CObject module = OutputVariableModule(design);
    if (!module)
        return false;
    const std::string solution = Names::Solution(setupName);
    const auto read = [&](const std::string& load, double(&components)[3]) {
        for (int axis = 0; axis < 3; ++axis)
            if (!ReadValue(module.get(), load + Names::axes[axis], solution, components[axis]))
                return false;
        return true;
    };
    return read(Names::Force(name), result.force) && read(Names::Torque(name), result.torque);
}

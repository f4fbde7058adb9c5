#include "comutils/DesignVariableCommands.h"
#include "coupling/Operation.h"

bool CKinoraVeltrixCoupling::SetVariableValue(const std::string& name, const std::string& value, bool isNew) const {
    const HoldingOperation operation(*this);
    return operation.HasBegun() && m_pDesign && DesignVariableCommands::SetVariable(m_pDesign, name, value, isNew);
}

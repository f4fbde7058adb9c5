#include "comutils/DesignVariableCommands.h"
#include "coupling/KinoraVeltrixCoupling.h"

bool CKinoraVeltrixCoupling::SetVariableValue(const std::string& name, const std::string& value, bool isNew) const {
    return m_pDesign && DesignVariableCommands::SetVariable(m_pDesign, name, value, isNew);
}

#include "comutils/ComUtils.h"
#include "comutils/Dispatch.h"
#include "coupling/KinoraVeltrixCoupling.h"

bool CKinoraVeltrixCoupling::SetVariableValue(const std::string& name, const std::string& value, bool isNew) const {
    if (!m_pDesign)
        return false;
    return Dispatch::Call(m_pDesign, L"ChangeProperty",
                          {CValue::Attach(CComUtils::GetChangePropertyArgument(name, value, isNew))});
}

#include "comutils/ComUtils.h"
#include "comutils/Dispatch.h"
#include "coupling/KinoraVeltrixCoupling.h"

bool CKinoraVeltrixCoupling::GetMessages(std::vector<std::string>& messages, MessageSeverity severity) {
    if (!m_pDesktop || !m_pProject || !m_pDesign)
        return false;
    std::string project, design;
    if (!Dispatch::QueryText(m_pProject, L"GetName", project) || !Dispatch::QueryText(m_pDesign, L"GetName", design))
        return false;
    CValue result;
    if (!Dispatch::Call(m_pDesktop, L"GetMessages", {project, design, CValue::Int(static_cast<int>(severity))}, result))
        return false;
    messages = CComUtils::ReadStringArray(result.Get());
    return true;
}

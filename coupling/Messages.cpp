#include "comutils/DesktopCommands.h"
#include "comutils/ObjectCommands.h"
#include "coupling/Operation.h"

bool CKinoraVeltrixCoupling::GetMessages(std::vector<std::string>& messages, MessageSeverity severity) {
    const HoldingOperation operation(*this);
    if (!operation.HasBegun() || !m_pDesktop || !m_pProject || !m_pDesign) {
        return false;
    }
    std::string project, design;
    if (!ObjectCommands::GetName(m_pProject, project) || !ObjectCommands::GetName(m_pDesign, design)) {
        return false;
    }
    return DesktopCommands::GetMessages(m_pDesktop, project, design, static_cast<int>(severity), messages);
}

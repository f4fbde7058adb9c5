#include "comutils/Names.h"
#include "comutils/ObjectCommands.h"
#include "comutils/ParametricCommands.h"
#include "coupling/KinoraVeltrixCoupling.h"

bool CKinoraVeltrixCoupling::AddParametricSetup(bool replace) const {
    if (!m_pDesign) {
        return false;
    }
    const CObject setups = ObjectCommands::GetChildObject(m_pDesign, Names::parametricChild);
    bool exists = ParametricCommands::HasHistory(setups.get());
    if (exists && replace) {
        if (!ParametricCommands::DeleteHistory(setups.get())) {
            return false;
        }
        exists = false;
    }
    CValue history = ParametricCommands::HistoryArgument(m_stepEntries, m_stepRows);
    return exists ? ParametricCommands::EditHistory(setups.get(), std::move(history))
                  : ParametricCommands::InsertHistory(setups.get(), std::move(history));
}

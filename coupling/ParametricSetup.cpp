#include "comutils/Names.h"
#include "comutils/ObjectCommands.h"
#include "comutils/ParametricCommands.h"
#include "coupling/Operation.h"

bool CKinoraVeltrixCoupling::AddParametricSetup(bool replace) const {
    const HoldingOperation operation(*this);
    return operation.HasBegun() && m_pDesign && WriteHistory(replace);
}

bool CKinoraVeltrixCoupling::WriteHistory(bool replace) const {
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

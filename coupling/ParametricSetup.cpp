#include "comutils/ComUtils.h"
#include "comutils/Dispatch.h"
#include "comutils/Names.h"
#include "comutils/ParametricHistory.h"
#include "coupling/KinoraVeltrixCoupling.h"

bool CKinoraVeltrixCoupling::AddParametricSetup(bool replace) const {
    using ParametricHistory::setupName;
    if (!m_pDesign)
        return false;
    const CObject setups = Dispatch::Own(CComUtils::CallGetChildObject(m_pDesign, Names::parametricChild));
    bool exists = Names::Contains(CComUtils::CallGetChildNames(setups.get()), setupName);
    if (exists && replace) {
        if (!Dispatch::Call(setups.get(), L"DeleteSetups", {{setupName}}))
            return false;
        exists = false;
    }
    CValue history = ParametricHistory::Argument(m_stepEntries, m_stepRows);
    return exists ? Dispatch::Call(setups.get(), L"EditSetup", {setupName, std::move(history)})
                  : Dispatch::Call(setups.get(), L"InsertSetup", {"OptiParametric", std::move(history)});
}

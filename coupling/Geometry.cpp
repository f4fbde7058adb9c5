#include "comutils/ComUtils.h"
#include "comutils/Dispatch.h"
#include "comutils/Names.h"
#include "coupling/KinoraVeltrixCoupling.h"

bool CKinoraVeltrixCoupling::InitGeometry(const std::string& geometryFile, const std::string& units) {
    if (!m_pDesign)
        return false;
    const CObject editor = Dispatch::Own(CComUtils::CallSetActive(m_pDesign, L"SetActiveEditor", Names::modelerEditor));
    // The unit decides how the file's numbers are read, so it comes first.
    if (!editor || !CComUtils::CallSetModelUnits(editor.get(), units) ||
        !CComUtils::CallImport(editor.get(), geometryFile) || !CComUtils::SetSolveInside(editor.get()) ||
        !CComUtils::CheckAndInsertSetup(m_pDesign))
        return false;
    // Only changes what the user sees; a desktop that cannot do it is no failure.
    Dispatch::Call(editor.get(), L"FitAll", {});
    return true;
}

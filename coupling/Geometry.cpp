#include "comutils/DesignCommands.h"
#include "comutils/MaterialCommands.h"
#include "comutils/ModelerCommands.h"
#include "comutils/Names.h"
#include "comutils/SetupCommands.h"
#include "coupling/Operation.h"

bool CKinoraVeltrixCoupling::InitGeometry(const std::string& geometryFile, const std::string& units) {
    const HoldingOperation operation(*this);
    if (!operation.HasBegun() || !m_pDesign) {
        return false;
    }
    const CObject editor = DesignCommands::SetActiveEditor(m_pDesign, Names::modelerEditor);
    // The unit decides how the file's numbers are read, so it comes first.
    if (!editor || !ModelerCommands::SetModelUnits(editor.get(), units) ||
        !ModelerCommands::Import(editor.get(), geometryFile) || !MaterialCommands::SetSolveInside(editor.get()) ||
        !SetupCommands::EnsureSetup(m_pDesign)) {
        return false;
    }
    // Only changes what the user sees; a desktop that cannot do it is no failure.
    ModelerCommands::FitAll(editor.get());
    return true;
}

#pragma once

#include "coupling/KinoraVeltrixCoupling.h"

/// What the operations leave to a host, for a layer above them that does it in the host's place.
class CCouplingInside {
public:
    /// @return true from a launch that found an application to the release of it
    static bool HasApplication(const CKinoraVeltrixCoupling& coupling) { return coupling.m_pApplication != nullptr; }

    static bool HasProject(const CKinoraVeltrixCoupling& coupling) { return coupling.m_pProject != nullptr; }

    static bool HasDesign(const CKinoraVeltrixCoupling& coupling) { return coupling.m_pDesign != nullptr; }

    /// As `LaunchDesktop`, for a desktop that the caller names.
    static bool Launch(CKinoraVeltrixCoupling& coupling, const std::string& progId) {
        return HasApplication(coupling) || coupling.Launch(progId);
    }

    /// Lets go of design and project and forgets all that is known of them, so that the object is as it was after its
    /// launch: the clones of materials are those of one project.
    static void LeaveProject(CKinoraVeltrixCoupling& coupling) {
        coupling.ReleaseDesignAndProject();
        coupling.m_stepCount = 0;
        coupling.m_stepEntries.clear();
        coupling.m_stepRows.clear();
        coupling.m_materialClones.clear();
        coupling.m_plainMaterials.clear();
    }
};

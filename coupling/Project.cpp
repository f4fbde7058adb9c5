#include "comutils/DesignCommands.h"
#include "comutils/DesktopCommands.h"
#include "comutils/Names.h"
#include "comutils/ObjectCommands.h"
#include "comutils/ProjectCommands.h"
#include "comutils/Text.h"
#include "coupling/CanonicalPath.h"
#include "coupling/Operation.h"

#include <algorithm>
#include <filesystem>

namespace {

/// Where a project file is, in comparable form.
struct ProjectLocation {
    std::string name; // UTF-8
    std::filesystem::path folder;
};

/// @throws std::filesystem::filesystem_error  there is no such path
std::filesystem::path Canonical(const std::string& path) {
    return CanonicalPath(Text::ToFileSystemPath(path));
}

ProjectLocation LocationOf(const std::string& projectPath) {
    const std::filesystem::path path = Canonical(projectPath);
    return {Text::ToNarrow(Text::OfPath(path.stem()), CP_UTF8), path.parent_path()};
}

/// The names differ in encoding on purpose: one with other than ASCII characters never matches, and its file is opened
/// a second time.
bool IsAt(IDispatch* project, const ProjectLocation& location) {
    std::string name, folder;
    return ObjectCommands::GetName(project, name) && name == location.name &&
           ProjectCommands::GetPath(project, folder) && Canonical(folder) == location.folder;
}

/// @return the project among those that the desktop has open; null when it is not there or they cannot be listed
CObject FindOpenProject(IDispatch* desktop, const ProjectLocation& location) {
    const CObject projects = DesktopCommands::GetProjects(desktop);
    LONG count = 0;
    if (!DesktopCommands::GetCount(projects.get(), count)) {
        return nullptr;
    }
    for (LONG index = 0; index < count; ++index) {
        CObject project = DesktopCommands::GetItem(projects.get(), index);
        if (project && IsAt(project.get(), location)) {
            return project;
        }
    }
    return nullptr;
}

} // namespace

void CKinoraVeltrixCoupling::ReleaseDesignAndProject() {
    ReleaseReference(m_pDesign);
    ReleaseReference(m_pProject);
}

bool CKinoraVeltrixCoupling::CreateProject(const std::string& projectPath, const std::string& geometryFile,
                                           const std::string& units) {
    const Operation operation(*this);
    if (!operation.HasBegun() || !LaunchWhenNeeded()) {
        return false;
    }
    CObject project = DesktopCommands::NewProject(m_pDesktop);
    if (!project) {
        return false;
    }
    m_pProject = project.release();
    if (!ProjectCommands::SaveAs(m_pProject, projectPath, false) ||
        !ProjectCommands::InsertDesign(m_pProject, Names::newDesign)) {
        return false;
    }
    m_pDesign = ProjectCommands::SetActiveDesign(m_pProject, Names::newDesign).release();
    if (!m_pDesign || !DesignCommands::SetDesignSettings(m_pDesign)) {
        return false;
    }
    const OwnCalls calls(*this);
    return InitGeometry(geometryFile, units);
}

bool CKinoraVeltrixCoupling::OpenProject(const std::string& projectPath, const std::string& designName) {
    const Operation operation(*this);
    if (!operation.HasBegun() || !LaunchWhenNeeded()) {
        return false;
    }
    ReleaseDesignAndProject();
    m_pProject = FindOpenProject(m_pDesktop, LocationOf(projectPath)).release();
    if (!m_pProject) {
        m_pProject = DesktopCommands::OpenProject(m_pDesktop, projectPath).release();
    }
    if (!m_pProject) {
        return false;
    }
    if (designName.empty()) {
        return true;
    }
    m_pDesign = ProjectCommands::SetActiveDesign(m_pProject, designName).release();
    return m_pDesign != nullptr;
}

bool CKinoraVeltrixCoupling::GetVeltrixDesigns(const std::string& projectPath, std::vector<std::string>& designs) {
    const Operation operation(*this);
    if (!operation.HasBegun()) {
        return false;
    }
    {
        const OwnCalls calls(*this);
        if (!OpenProject(projectPath, "")) {
            return false;
        }
    }
    const CObject project = SharedReference(m_pProject);
    CValue names;
    if (!ObjectCommands::GetChildNames(project.get(), names)) {
        return false;
    }
    for (const std::string& name : names.ToTexts()) {
        const CObject design = ProjectCommands::GetDesign(project.get(), name);
        CValue type;
        if (!DesignCommands::GetDesignType(design.get(), type)) {
            return false;
        }
        if (type.IsText() && type.ToText() == Names::designType) {
            designs.push_back(name);
        }
    }
    std::sort(designs.begin(), designs.end());
    return true;
}

bool CKinoraVeltrixCoupling::SaveProject() {
    const HoldingOperation operation(*this);
    return operation.HasBegun() && ProjectCommands::Save(m_pProject);
}

bool CKinoraVeltrixCoupling::CloseProject() {
    const Operation operation(*this);
    if (!operation.HasBegun() || !m_pProject) {
        return false;
    }
    ReleaseReference(m_pDesign);
    if (!ProjectCommands::Close(m_pProject)) {
        return false;
    }
    ReleaseReference(m_pProject);
    return true;
}

#include "comutils/ComUtils.h"
#include "comutils/Dispatch.h"
#include "comutils/Names.h"
#include "comutils/Text.h"
#include "coupling/KinoraVeltrixCoupling.h"
#include "coupling/Reference.h"

#include <algorithm>
#include <filesystem>

namespace {

constexpr char newDesignName[] = "Veltrix3DDesign1";

/// Where a project file is, in comparable form.
struct ProjectPlace {
    std::string name; // UTF-8
    std::filesystem::path folder;
};

/// @throws std::filesystem::filesystem_error  there is no such path
std::filesystem::path Canonical(const std::string& path) {
    return std::filesystem::canonical(Text::ToFileSystemPath(path));
}

ProjectPlace PlaceOf(const std::string& projectPath) {
    const std::filesystem::path path = Canonical(projectPath);
    return {Text::ToNarrow(path.stem().wstring(), CP_UTF8), path.parent_path()};
}

/// The names differ in encoding on purpose: one with other than ASCII characters never matches, and its file is opened
/// a second time.
bool IsAt(IDispatch* project, const ProjectPlace& place) {
    std::string name, folder;
    return Dispatch::QueryText(project, L"GetName", name) && name == place.name &&
           Dispatch::QueryText(project, L"GetPath", folder) && Canonical(folder) == place.folder;
}

/// @return the project among those that the desktop has open; null when it is not there or they cannot be listed
CObject FindOpenProject(IDispatch* desktop, const ProjectPlace& place) {
    const CObject projects = Dispatch::QueryObject(desktop, L"GetProjects", {});
    CValue count;
    if (!Dispatch::Call(projects.get(), L"Count", {}, count))
        return nullptr;
    for (LONG index = 0; index < count.Get().lVal; ++index) {
        CObject project = Dispatch::QueryObject(projects.get(), L"Item", {CValue::Int(index)});
        if (project && IsAt(project.get(), place))
            return project;
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
    if (!LaunchWhenNeeded())
        return false;
    CObject project = Dispatch::QueryObject(m_pDesktop, L"NewProject", {});
    if (!project)
        return false;
    m_pProject = project.release();
    if (!CComUtils::CallSaveAs(m_pProject, projectPath, false) ||
        !CComUtils::CallInsertDesign(m_pProject, newDesignName))
        return false;
    m_pDesign = CComUtils::CallSetActive(m_pProject, L"SetActiveDesign", newDesignName);
    return m_pDesign && CComUtils::CallSetDesignSetttings(m_pDesign) && InitGeometry(geometryFile, units);
}

bool CKinoraVeltrixCoupling::OpenProject(const std::string& projectPath, const std::string& designName) {
    if (!LaunchWhenNeeded())
        return false;
    ReleaseDesignAndProject();
    m_pProject = FindOpenProject(m_pDesktop, PlaceOf(projectPath)).release();
    if (!m_pProject)
        m_pProject = Dispatch::QueryObject(m_pDesktop, L"OpenProject", {projectPath}).release();
    if (!m_pProject)
        return false;
    if (designName.empty())
        return true;
    m_pDesign = CComUtils::CallSetActive(m_pProject, L"SetActiveDesign", designName);
    return m_pDesign != nullptr;
}

bool CKinoraVeltrixCoupling::GetVeltrixDesigns(const std::string& projectPath, std::vector<std::string>& designs) {
    if (!OpenProject(projectPath, ""))
        return false;
    CValue names;
    if (!Dispatch::Call(m_pProject, L"GetChildNames", {}, names))
        return false;
    for (const std::string& name : CComUtils::ReadStringArray(names.Get())) {
        const CObject design = Dispatch::QueryObject(m_pProject, L"GetDesign", {name});
        CValue type;
        if (!Dispatch::Call(design.get(), L"GetDesignType", {}, type))
            return false;
        if (type.IsText() && type.ToText() == Names::designType)
            designs.push_back(name);
    }
    std::sort(designs.begin(), designs.end());
    return true;
}

bool CKinoraVeltrixCoupling::SaveProject() {
    return Dispatch::Call(m_pProject, L"Save", {});
}

bool CKinoraVeltrixCoupling::CloseProject() {
    if (!m_pProject)
        return false;
    ReleaseReference(m_pDesign);
    if (!Dispatch::Call(m_pProject, L"Close", {}))
        return false;
    ReleaseReference(m_pProject);
    return true;
}

#include "simulator/commands/ProjectObject.h"

#include "simulator/commands/BlockReader.h"
#include "simulator/commands/DefinitionManager.h"
#include "simulator/commands/DesignObject.h"
#include "simulator/commands/MaterialsObject.h"
#include "simulator/commands/Names.h"
#include "simulator/commands/ProjectBound.h"
#include "simulator/commands/Requirements.h"
#include "simulator/model/DesktopError.h"
#include "simulator/model/Files.h"
#include "simulator/model/ProjectFile.h"
#include "simulator/model/Text.h"

#include <algorithm>

namespace vantor::commands {
namespace {

using model::DesktopError;
using model::ErrorCode;
using model::Quoted;

constexpr const char* designType = "Veltrix 3D";

/// A project.
class ProjectObject : public ProjectBound {
public:
    ProjectObject(SessionPointer session, ProjectPointer project)
        : ProjectBound(methods, std::move(session), std::move(project)) {}

private:
    static const MethodTable methods;

    Value GetName(Arguments& arguments) {
        arguments.End();
        return RequireProject().name;
    }

    /// The project's folder with a separator at its end; the program's own folder for a project without a file.
    Value GetPath(Arguments& arguments) {
        arguments.End();
        const auto& file = RequireProject().file;
        auto folder = file.empty() ? std::filesystem::current_path() : file.parent_path();
        folder /= "";
        return model::Utf8(folder.make_preferred());
    }

    Value Save(Arguments& arguments) {
        arguments.End();
        if (RequireProject().file.empty()) {
            throw DesktopError(ErrorCode::ProjectNotSaved,
                               "the project " + Quoted(RequireProject().name) + " has no file yet; use SaveAs");
        }
        model::SaveProjectFile(RequireProject());
        RequireProject().changed = false;
        return {};
    }

    Value SaveAs(Arguments& arguments) {
        const std::string& path = arguments.Text();
        const bool overwrite = arguments.Flag();
        arguments.End();
        const auto file = model::WholePath(path);
        CheckTarget(file, overwrite);
        model::Project saved = RequireProject();
        saved.file = file;
        saved.name = model::Utf8(file.stem());
        saved.changed = false;
        model::SaveProjectFile(saved);
        RequireProject() = saved;
        return {};
    }

    void CheckTarget(const std::filesystem::path& file, bool overwrite) const {
        if (!file.has_stem() || !file.has_filename()) {
            throw DesktopError(ErrorCode::InvalidProjectName, Quoted(model::Utf8(file)) + " names no file");
        }
        std::error_code ignored;
        if (!std::filesystem::is_directory(file.parent_path(), ignored)) {
            throw DesktopError(ErrorCode::InvalidDirectory,
                               "there is no folder " + Quoted(model::Utf8(file.parent_path())));
        }
        if (!overwrite && std::filesystem::exists(file, ignored)) {
            throw DesktopError(ErrorCode::ProjectExists,
                               "the file " + Quoted(model::Utf8(file)) + " exists and may not be overwritten");
        }
        const ProjectPointer open = TheDesktop().FindByFile(file);
        if (open && open != SharedProject()) {
            throw DesktopError(ErrorCode::ProjectExists, Quoted(model::Utf8(file)) + " is open as another project");
        }
    }

    Value Close(Arguments& arguments) {
        arguments.End();
        RequireProject().Close();
        auto& projects = TheDesktop().projects;
        projects.erase(std::remove(projects.begin(), projects.end(), SharedProject()), projects.end());
        return {};
    }

    Value InsertDesign(Arguments& arguments) {
        const std::string& type = arguments.Text();
        const std::string& name = arguments.Text();
        const std::string& solution = arguments.Text();
        arguments.Literal("");
        arguments.End();
        if (type != designType) {
            throw DesktopError(ErrorCode::UnsupportedDesignType,
                               "designs of type " + Quoted(type) + " are unknown; known is " + Quoted(designType));
        }
        RequireOneOf(solution, {magnetostatic}, "argument 3");
        if (name.empty()) {
            FailBadValue("argument 2: a design needs a name");
        }
        if (RequireProject().FindDesign(name)) {
            throw DesktopError(ErrorCode::DesignNameCollision, "the project has a design " + Quoted(name) + " already");
        }
        auto design = std::make_shared<model::Design>();
        design->name = name;
        design->type = type;
        design->solutionType = solution;
        RequireProject().designs.push_back(design);
        RequireProject().activeDesign = name;
        MarkChanged();
        return MakeDesign(SharedSession(), {SharedProject(), design});
    }

    std::shared_ptr<model::Design> RequireDesign(const std::string& name) const {
        auto design = RequireProject().FindDesign(name);
        if (!design) {
            throw DesktopError(ErrorCode::NotFound, "there is no design " + Quoted(name) +
                                                        "; the designs are: " + model::QuotedList(DesignNames()));
        }
        return design;
    }

    std::vector<std::string> DesignNames() const {
        std::vector<std::string> names;
        for (const auto& design : RequireProject().designs) {
            names.push_back(design->name);
        }
        return names;
    }

    Value SetActiveDesign(Arguments& arguments) {
        const std::string& name = arguments.Text();
        arguments.End();
        auto design = RequireDesign(name);
        RequireProject().activeDesign = name;
        return MakeDesign(SharedSession(), {SharedProject(), design});
    }

    Value GetDesign(Arguments& arguments) {
        const std::string& name = arguments.Text();
        arguments.End();
        return MakeDesign(SharedSession(), {SharedProject(), RequireDesign(name)});
    }

    Value GetChildNames(Arguments& arguments) {
        arguments.End();
        return Value::Texts(DesignNames());
    }

    Value GetChildObject(Arguments& arguments) {
        const std::string& name = arguments.Text();
        arguments.End();
        if (name == "Materials") {
            RequireProject();
            return MakeMaterials(SharedSession(), SharedProject());
        }
        return MakeDesign(SharedSession(), {SharedProject(), RequireDesign(name)});
    }

    Value GetDefinitionManager(Arguments& arguments) {
        arguments.End();
        RequireProject();
        return MakeDefinitionManager(SharedSession(), SharedProject());
    }

    /// Takes a library material into the project. A name that the library lacks becomes a non-magnetic definition, so
    /// that parts of an imported assembly that carry such a name do not stand in the way.
    Value AddMaterial(Arguments& arguments) {
        BlockReader block(arguments.List(), "argument 1");
        block.End();
        arguments.End();
        const std::string& name = block.Name();
        if (name.empty()) {
            FailBadValue("a material needs a name");
        }
        if (RequireProject().materials.count(name) != 0) {
            throw DesktopError(ErrorCode::InvalidDefinition, "the project has a material " + Quoted(name) + " already");
        }
        if (!RequireProject().FindMaterial(name, TheDesktop().library)) {
            RequireProject().materials.emplace(name, model::Material{name, 1.0, std::nullopt});
            Report(model::Severity::Warning,
                   "AddMaterial: " + Quoted(name) + " is not in the library and is defined as a non-magnetic material");
        } else {
            RequireProjectMaterial(name);
        }
        MarkChanged();
        return {};
    }
};

const ScriptObject::MethodTable ProjectObject::methods = {
    {"GetName", Bound<&ProjectObject::GetName>::Handle},
    {"GetPath", Bound<&ProjectObject::GetPath>::Handle},
    {"Save", Bound<&ProjectObject::Save>::Handle},
    {"SaveAs", Bound<&ProjectObject::SaveAs>::Handle},
    {"Close", Bound<&ProjectObject::Close>::Handle},
    {"InsertDesign", Bound<&ProjectObject::InsertDesign>::Handle},
    {"SetActiveDesign", Bound<&ProjectObject::SetActiveDesign>::Handle},
    {"GetDesign", Bound<&ProjectObject::GetDesign>::Handle},
    {"GetChildNames", Bound<&ProjectObject::GetChildNames>::Handle},
    {"GetChildObject", Bound<&ProjectObject::GetChildObject>::Handle},
    {"GetDefinitionManager", Bound<&ProjectObject::GetDefinitionManager>::Handle},
    {"AddMaterial", Bound<&ProjectObject::AddMaterial>::Handle},
};

} // namespace

Value::Object MakeProject(SessionPointer session, ProjectPointer project) {
    return std::make_shared<ProjectObject>(std::move(session), std::move(project));
}

} // namespace vantor::commands

#include "simulator/commands/DefinitionManager.h"

#include "simulator/commands/ProjectBound.h"
#include "simulator/model/DesktopError.h"
#include "simulator/model/Text.h"

namespace vantor::commands {
namespace {

using model::DesktopError;
using model::ErrorCode;
using model::Quoted;

/// Makes and copies definitions.
class DefinitionManager : public ProjectBound {
public:
    DefinitionManager(SessionPointer session, ProjectPointer project)
        : ProjectBound(methods, std::move(session), std::move(project)) {}

private:
    static const MethodTable methods;

    /// A clone takes the place of a definition of the same name: an opened project is initialised again by a client
    /// that does not know the clones of its last run.
    Value CloneMaterial(Arguments& arguments) {
        const std::string& source = arguments.Text();
        const std::string& name = arguments.Text();
        arguments.End();
        if (name.empty() || name == source) {
            throw DesktopError(ErrorCode::InvalidDefinition, "a clone needs a name of its own, not " + Quoted(name));
        }
        model::Material clone = RequireProjectMaterial(source);
        clone.name = name;
        if (RequireProject().materials.count(name) != 0) {
            Report(model::Severity::Info, "CloneMaterial: the definition " + Quoted(name) +
                                              " has been replaced by a clone of " + Quoted(source));
        }
        RequireProject().materials[name] = clone;
        MarkChanged();
        return true;
    }
};

const ScriptObject::MethodTable DefinitionManager::methods = {
    {"CloneMaterial", Bound<&DefinitionManager::CloneMaterial>::Handle},
};

} // namespace

Value::Object MakeDefinitionManager(SessionPointer session, ProjectPointer project) {
    return std::make_shared<DefinitionManager>(std::move(session), std::move(project));
}

} // namespace vantor::commands

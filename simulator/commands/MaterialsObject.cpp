#include "simulator/commands/MaterialsObject.h"

#include "simulator/commands/MaterialObject.h"
#include "simulator/commands/ProjectBound.h"
#include "simulator/model/DesktopError.h"
#include "simulator/model/Text.h"

namespace vantor::commands {
namespace {

using model::DesktopError;
using model::ErrorCode;
using model::Quoted;

/// The project's own materials.
class MaterialsObject : public ProjectBound {
public:
    MaterialsObject(SessionPointer session, ProjectPointer project)
        : ProjectBound(methods, std::move(session), std::move(project)) {}

private:
    static const MethodTable methods;

    Value GetChildNames(Arguments& arguments) {
        arguments.End();
        std::vector<std::string> names;
        for (const auto& entry : RequireProject().materials) {
            names.push_back(entry.first);
        }
        return Value::Texts(names);
    }

    Value GetChildObject(Arguments& arguments) {
        const std::string& name = arguments.Text();
        arguments.End();
        if (RequireProject().materials.count(name) == 0) {
            throw DesktopError(ErrorCode::InvalidDefinition, "the project has no material " + Quoted(name));
        }
        return MakeMaterial(SharedSession(), SharedProject(), name);
    }
};

const ScriptObject::MethodTable MaterialsObject::methods = {
    {"GetChildNames", Bound<&MaterialsObject::GetChildNames>::Handle},
    {"GetChildObject", Bound<&MaterialsObject::GetChildObject>::Handle},
};

} // namespace

Value::Object MakeMaterials(SessionPointer session, ProjectPointer project) {
    return std::make_shared<MaterialsObject>(std::move(session), std::move(project));
}

} // namespace vantor::commands

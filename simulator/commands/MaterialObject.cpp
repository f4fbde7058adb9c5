#include "simulator/commands/MaterialObject.h"

#include "simulator/commands/ProjectBound.h"
#include "simulator/commands/Requirements.h"
#include "simulator/model/DesktopError.h"
#include "simulator/model/Text.h"

namespace vantor::commands {
namespace {

using model::DesktopError;
using model::ErrorCode;
using model::Quoted;

constexpr const char* nameProperty = "Name";
constexpr const char* permeabilityProperty = "Relative Permeability";
constexpr const char* magnitudeProperty = "Magnetic Coercivity Magnitude";
constexpr const char* componentsProperty = "Magnetic Coercivity Components";

/// 0, 1 or 2 for ".../Component1" to ".../Component3"; -1 for any other property.
int ComponentOf(const std::string& property) {
    for (int component = 0; component < 3; ++component) {
        if (property == std::string(componentsProperty) + "/Component" + std::to_string(component + 1)) {
            return component;
        }
    }
    return -1;
}

/// One material of a project. Numbers are read as text; components are written as numbers.
class MaterialObject : public ProjectBound {
public:
    MaterialObject(SessionPointer session, ProjectPointer project, std::string name)
        : ProjectBound(methods, std::move(session), std::move(project)), m_name(std::move(name)) {}

private:
    static const MethodTable methods;

    model::Material& RequireMaterial() const {
        const auto found = RequireProject().materials.find(m_name);
        if (found == RequireProject().materials.end()) {
            throw DesktopError(ErrorCode::ObjectDeleted, "the material " + Quoted(m_name) + " is gone");
        }
        return found->second;
    }

    Value GetPropNames(Arguments& arguments) {
        arguments.End();
        std::vector<std::string> names = {nameProperty, permeabilityProperty};
        if (RequireMaterial().coercivity) {
            names.insert(names.end(), {magnitudeProperty, componentsProperty});
            for (const char* component : {"/Component1", "/Component2", "/Component3"}) {
                names.push_back(std::string(componentsProperty) + component);
            }
        }
        return Value::Texts(names);
    }

    [[noreturn]] void FailUnknown(const std::string& property) const {
        FailBadValue("the material " + Quoted(m_name) + " has no property " + Quoted(property));
    }

    Value GetPropValue(Arguments& arguments) {
        const std::string& property = arguments.Text();
        arguments.End();
        const model::Material& material = RequireMaterial();
        if (property == nameProperty) {
            return material.name;
        }
        if (property == permeabilityProperty) {
            return model::FormatNumber(material.relativePermeability);
        }
        if (!material.coercivity) {
            FailUnknown(property);
        }
        const model::Coercivity& coercivity = *material.coercivity;
        if (property == magnitudeProperty) {
            return model::FormatNumber(coercivity.magnitude);
        }
        if (property == componentsProperty) {
            Value::List components;
            for (const double component : coercivity.components) {
                components.emplace_back(model::FormatNumber(component));
            }
            return components;
        }
        const int component = ComponentOf(property);
        if (component < 0) {
            FailUnknown(property);
        }
        return model::FormatNumber(coercivity.components[static_cast<std::size_t>(component)]);
    }

    Value SetPropValue(Arguments& arguments) {
        const std::string& property = arguments.Text();
        const int component = ComponentOf(property);
        if (component < 0) {
            FailBadValue("the property " + Quoted(property) + " of the material " + Quoted(m_name) +
                         " cannot be written");
        }
        if (!RequireMaterial().coercivity) {
            FailUnknown(property);
        }
        const double value = arguments.Number();
        arguments.End();
        RequireMaterial().coercivity->components[static_cast<std::size_t>(component)] = value;
        MarkChanged();
        for (const auto& design : RequireProject().designs) {
            if (design->solution) {
                design->solution->current = false;
            }
        }
        return {};
    }

    Value GetChildNames(Arguments& arguments) {
        arguments.End();
        RequireMaterial();
        return Value::List{};
    }

    std::string m_name;
};

const ScriptObject::MethodTable MaterialObject::methods = {
    {"GetPropNames", Bound<&MaterialObject::GetPropNames>::Handle},
    {"GetPropValue", Bound<&MaterialObject::GetPropValue>::Handle},
    {"SetPropValue", Bound<&MaterialObject::SetPropValue>::Handle},
    {"GetChildNames", Bound<&MaterialObject::GetChildNames>::Handle},
};

} // namespace

Value::Object MakeMaterial(SessionPointer session, ProjectPointer project, std::string name) {
    return std::make_shared<MaterialObject>(std::move(session), std::move(project), std::move(name));
}

} // namespace vantor::commands

#include "simulator/commands/GeometryHandle.h"

#include "simulator/commands/DesignBound.h"
#include "simulator/commands/Requirements.h"
#include "simulator/model/Text.h"

namespace vantor::commands {
namespace {

using model::Quoted;

/// A solid or the region, as a list of properties.
class GeometryHandle : public DesignBound {
public:
    GeometryHandle(SessionPointer session, DesignReference design, std::string name)
        : DesignBound(methods, std::move(session), std::move(design)), m_name(std::move(name)) {}

private:
    static const MethodTable methods;

    /// The members that solids and the region have in common.
    struct Members {
        std::string& material;
        bool& solveInside;
        std::string& coordinateSystem;
        std::string& orientation;
        bool& isModel;
    };

    Members RequireMembers() const {
        model::Modeler& modeler = RequireDesign().modeler;
        if (modeler.IsRegion(m_name)) {
            model::Region& r = modeler.TheRegion();
            return {r.material, r.solveInside, r.coordinateSystem, r.orientation, r.isModel};
        }
        model::GeometryObject& o = modeler.RequireObject(m_name);
        return {o.material, o.solveInside, o.coordinateSystem, o.orientation, o.isModel};
    }

    Value GetPropNames(Arguments& arguments) {
        arguments.End();
        RequireMembers();
        return Value::Texts({"Name", "Material", "Solve Inside", "Coordinate System", "Orientation", "Model"});
    }

    [[noreturn]] void FailUnknown(const std::string& property, const char* what) const {
        FailBadValue("the object " + Quoted(m_name) + " has no property " + Quoted(property) + what);
    }

    Value GetPropValue(Arguments& arguments) {
        const std::string& property = arguments.Text();
        arguments.End();
        const Members members = RequireMembers();
        if (property == "Name") {
            return m_name;
        }
        if (property == "Material") {
            return Quoted(members.material);
        }
        if (property == "Solve Inside") {
            return members.solveInside;
        }
        if (property == "Coordinate System") {
            return members.coordinateSystem;
        }
        if (property == "Orientation") {
            return members.orientation;
        }
        if (property == "Model") {
            return members.isModel;
        }
        FailUnknown(property, "");
    }

    /// Writing "Coordinate System" does not move the solid's own coordinates: they are read in the new frame from then
    /// on, so that the solid follows it.
    Value SetPropValue(Arguments& arguments) {
        const std::string& property = arguments.Text();
        const Members members = RequireMembers();
        if (property == "Material") {
            const std::string name = RequireQuoted(arguments.Text(), "argument 2");
            members.material = RequireProjectMaterial(name).name;
        } else if (property == "Solve Inside") {
            members.solveInside = arguments.Flag();
        } else if (property == "Coordinate System") {
            members.coordinateSystem = RequireFrame(arguments.Text());
        } else if (property == "Orientation") {
            members.orientation = RequireFrame(arguments.Text());
        } else if (property == "Model") {
            members.isModel = arguments.Flag();
        } else {
            FailUnknown(property, " that can be written");
        }
        arguments.End();
        MarkModelChanged();
        return {};
    }

    const std::string& RequireFrame(const std::string& name) const {
        if (!RequireDesign().modeler.HasFrame(name)) {
            FailBadValue("argument 2: there is no coordinate system " + Quoted(name));
        }
        if (name != model::globalFrame && RequireDesign().modeler.IsRegion(m_name)) {
            FailBadValue("the region " + Quoted(m_name) + " stays in the coordinate system " +
                         Quoted(model::globalFrame));
        }
        return name;
    }

    Value GetChildNames(Arguments& arguments) {
        arguments.End();
        RequireMembers();
        return Value::List{};
    }

    std::string m_name;
};

const ScriptObject::MethodTable GeometryHandle::methods = {
    {"GetPropNames", Bound<&GeometryHandle::GetPropNames>::Handle},
    {"GetPropValue", Bound<&GeometryHandle::GetPropValue>::Handle},
    {"SetPropValue", Bound<&GeometryHandle::SetPropValue>::Handle},
    {"GetChildNames", Bound<&GeometryHandle::GetChildNames>::Handle},
};

} // namespace

Value::Object MakeGeometryHandle(SessionPointer session, DesignReference design, std::string name) {
    return std::make_shared<GeometryHandle>(std::move(session), std::move(design), std::move(name));
}

} // namespace vantor::commands

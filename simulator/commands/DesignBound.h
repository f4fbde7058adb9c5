#pragma once

#include "simulator/commands/ProjectBound.h"

#include <memory>
#include <string>

namespace vantor::commands {

/// An object that belongs to a design.
class DesignBound : public ProjectBound {
public:
    DesignBound(const MethodTable& methods, SessionPointer session, DesignReference design)
        : ProjectBound(methods, std::move(session), std::move(design.project)), m_design(std::move(design.design)) {}

protected:
    /// The design.
    /// @throws model::DesktopError (ObjectDeleted) when its project has been closed.
    model::Design& RequireDesign() const;

    DesignReference SharedDesign() const { return {SharedProject(), m_design}; }

    /// Notes a change of what is solved: the solution is no longer that of the model.
    void MarkModelChanged() const;

    std::string DesignName() const override { return m_design->name; }

    /// A method without arguments that gives the names of a list of the design: `Names<&model::Design::reports>`.
    template <auto list>
    Value Names(Arguments& arguments) {
        arguments.End();
        return Value::Texts(model::NamesOf(RequireDesign().*list));
    }

private:
    std::shared_ptr<model::Design> m_design;
};

} // namespace vantor::commands

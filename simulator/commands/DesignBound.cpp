#include "simulator/commands/DesignBound.h"

namespace vantor::commands {

model::Design& DesignBound::RequireDesign() const {
    RequireProject();
    return *m_design;
}

void DesignBound::MarkModelChanged() const {
    MarkChanged();
    if (m_design->solution) {
        m_design->solution->current = false;
    }
}

} // namespace vantor::commands

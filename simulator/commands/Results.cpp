#include "simulator/commands/Results.h"

#include "simulator/commands/DesignBound.h"

namespace vantor::commands {
namespace {

/// The child "Results": the names of the reports.
class Results : public DesignBound {
public:
    Results(SessionPointer session, DesignReference design)
        : DesignBound(methods, std::move(session), std::move(design)) {}

private:
    static const MethodTable methods;
};

const ScriptObject::MethodTable Results::methods = {
    {"GetChildNames", Bound<&Results::Names<&model::Design::reports>>::Handle},
};

} // namespace

Value::Object MakeResults(SessionPointer session, DesignReference design) {
    return std::make_shared<Results>(std::move(session), std::move(design));
}

} // namespace vantor::commands

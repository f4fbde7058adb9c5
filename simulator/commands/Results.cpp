#include "simulator/commands/Results.h"

#include "simulator/commands/DesignBound.h"

namespace vantor::commands {
namespace {

/// The child "Results": the names of the reports.
class Results : public DesignBound {
public:
    Results(SessionPointer session, DesignPlace place) : DesignBound(methods, std::move(session), std::move(place)) {}

private:
    static const MethodTable methods;
};

const ScriptObject::MethodTable Results::methods = {
    {"GetChildNames", Bound<&Results::Names<&model::Design::reports>>::Handle},
};

} // namespace

Value::Object MakeResults(SessionPointer session, DesignPlace place) {
    return std::make_shared<Results>(std::move(session), std::move(place));
}

} // namespace vantor::commands

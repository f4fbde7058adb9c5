#include "simulator/commands/Results.h"

#include "simulator/commands/DesignBound.h"

namespace vantor::commands {
namespace {

/// The child "Results": the names of the reports.
class Results : public DesignBound {
public:
    using DesignBound::DesignBound;

    const char* Kind() const override { return "Results"; }

private:
    const std::vector<Method>& Methods() const override {
        static const std::vector<Method> methods = {
            {"GetChildNames", Bound<&Results::Names<&model::Design::reports>>::Handle},
        };
        return methods;
    }
};

} // namespace

Value::Object MakeResults(SessionPointer session, DesignPlace place) {
    return std::make_shared<Results>(std::move(session), std::move(place));
}

} // namespace vantor::commands

// An expression either has a finite value or a complaint.
#include "simulator/model/DesktopError.h"
#include "simulator/model/Variables.h"

#include <cmath>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    using namespace vantor::model;
    const std::string text(reinterpret_cast<const char*>(data), size);
    Variables variables;
    variables.Add({{"Rotor_X", "0.01Meter"}, {"Rotor_Psi", "0.5Rad"}});
    try {
        if (!std::isfinite(Evaluate(text, variables.Lookup()).value)) {
            std::abort();
        }
    } catch (const ExpressionError&) {
    }
    try {
        variables.Change({{"Rotor_X", text}});
    } catch (const DesktopError&) {
    }
    return 0;
}

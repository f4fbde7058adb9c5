#include "tests/capi/strangers/Abi.h"
#include "tests/endtoend/Programs.h"

#include <algorithm>
#include <gtest/gtest.h>

Texts ExportedNames() {
    const endtoend::Outcome outcome = endtoend::RunProgram(KINORA_NM, {"-D", "--defined-only", KINORA_LIBRARY});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    Texts names;
    for (const std::string& line : endtoend::Lines(outcome.output)) {
        names.push_back(line.substr(line.rfind(' ') + 1)); // after address and kind
    }
    std::sort(names.begin(), names.end());
    return names;
}

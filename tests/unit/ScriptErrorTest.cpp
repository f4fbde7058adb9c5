#include "interface/KinoraVeltrixScriptErrors.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

/// The texts in the order of their codes: argument errors from 0x0000, the desktop's own from 0x0200.
const std::vector<std::string> argumentErrors = {
    "Normal execution",
    "Invalid script argument",
    "Missing script argument",
    "Argument memory allocation error",
    "Argument memory access error",
    "Non numeric argument",
    "Unsupported argument type",
    "The dimension of COM array does not equal to one",
    "Invalid COM array access",
    "Invalid argument conversion",
    "Incomplete array argument",
    "Design name collision, please choose a new name",
    "Unsupported design type",
    "The referenced object has been deleted",
};

const std::vector<std::string> desktopErrors = {
    "The execution of script is terminated by the user",
    "The command is not yet implemented",
    "Bad argument value",
    "Argument validation failed",
    "Memory allocation failed",
    "Failed to get file access",
    "Failed to write file",
    "Failed to read file",
    "No active project is opened",
    "Internal program error",
    "Cannot create the new project",
    "Cannot open the project",
    "No active design is opened",
    "The project or design is not found",
    "The project already exists",
    "Output data type error",
    "Document initialization failed",
    "Cannot insert the design",
    "Cannot locate the project",
    "Script execution error",
    "Unsupported script type",
    "Cannot pause or resume the script",
    "Cannot pause the script",
    "Cannot delete the design",
    "The module is not found",
    "Error building solver data",
    "The engine manager is missing",
    "Solution error",
    "The design is already simulating",
    "The design has unsaved changes",
    "Unable to start the simulation",
    "Port error",
    "The project is not saved",
    "The project failed to save",
    "The definition editor is nor found",
    "Simulation terminated with error",
    "The directory is invalid",
    "The simulation is still running",
    "Invalid project name",
    "Unsupported operation",
    "Unspecified error",
    "Invalid tool object name",
    "The access is not permitted",
    "The simulation is aborted by the user",
    "The simulation is clean stopped by the user",
    "Failed to remove definition",
    "Invalid definition",
    "The project path is too long",
};

void ExpectRows(std::int32_t firstCode, const std::vector<std::string>& texts) {
    for (std::size_t row = 0; row < texts.size(); ++row) {
        const std::int32_t code = firstCode + static_cast<std::int32_t>(row);
        char prefix[16];
        std::snprintf(prefix, sizeof prefix, "0x%04X: ", static_cast<unsigned>(code));
        ASSERT_NE(GetKinoraVeltrixScriptErrorText(code), nullptr) << prefix;
        EXPECT_EQ(GetKinoraVeltrixScriptErrorText(code), prefix + texts[row]);
    }
}

} // namespace

TEST(ScriptErrors, HasAllRows) {
    EXPECT_EQ(argumentErrors.size() + desktopErrors.size(), 62u);
    ExpectRows(0x0000, argumentErrors);
    ExpectRows(0x0200, desktopErrors);
}

TEST(ScriptErrors, OtherCodesHaveNoText) {
    for (const std::int32_t code : {-1, 0x000E, 0x01FF, 0x0230, 0x7FFFFFFF}) {
        EXPECT_EQ(GetKinoraVeltrixScriptErrorText(code), nullptr) << code;
    }
}

#include "interface/KinoraVeltrixScriptErrors.h"

#include <map>
#include <string>

namespace {

/// The desktop's own texts, word for word: 0x0000 to 0x000D are argument and array errors, 0x0200 to 0x022F errors of
/// the desktop and its projects. "nor found" (0x0222) is its spelling.
const std::map<std::int32_t, std::string> scriptErrors = {
    {0x0000, "0x0000: Normal execution"},
    {0x0001, "0x0001: Invalid script argument"},
    {0x0002, "0x0002: Missing script argument"},
    {0x0003, "0x0003: Argument memory allocation error"},
    {0x0004, "0x0004: Argument memory access error"},
    {0x0005, "0x0005: Non numeric argument"},
    {0x0006, "0x0006: Unsupported argument type"},
    {0x0007, "0x0007: The dimension of COM array does not equal to one"},
    {0x0008, "0x0008: Invalid COM array access"},
    {0x0009, "0x0009: Invalid argument conversion"},
    {0x000A, "0x000A: Incomplete array argument"},
    {0x000B, "0x000B: Design name collision, please choose a new name"},
    {0x000C, "0x000C: Unsupported design type"},
    {0x000D, "0x000D: The referenced object has been deleted"},
    {0x0200, "0x0200: The execution of script is terminated by the user"},
    {0x0201, "0x0201: The command is not yet implemented"},
    {0x0202, "0x0202: Bad argument value"},
    {0x0203, "0x0203: Argument validation failed"},
    {0x0204, "0x0204: Memory allocation failed"},
    {0x0205, "0x0205: Failed to get file access"},
    {0x0206, "0x0206: Failed to write file"},
    {0x0207, "0x0207: Failed to read file"},
    {0x0208, "0x0208: No active project is opened"},
    {0x0209, "0x0209: Internal program error"},
    {0x020A, "0x020A: Cannot create the new project"},
    {0x020B, "0x020B: Cannot open the project"},
    {0x020C, "0x020C: No active design is opened"},
    {0x020D, "0x020D: The project or design is not found"},
    {0x020E, "0x020E: The project already exists"},
    {0x020F, "0x020F: Output data type error"},
    {0x0210, "0x0210: Document initialization failed"},
    {0x0211, "0x0211: Cannot insert the design"},
    {0x0212, "0x0212: Cannot locate the project"},
    {0x0213, "0x0213: Script execution error"},
    {0x0214, "0x0214: Unsupported script type"},
    {0x0215, "0x0215: Cannot pause or resume the script"},
    {0x0216, "0x0216: Cannot pause the script"},
    {0x0217, "0x0217: Cannot delete the design"},
    {0x0218, "0x0218: The module is not found"},
    {0x0219, "0x0219: Error building solver data"},
    {0x021A, "0x021A: The engine manager is missing"},
    {0x021B, "0x021B: Solution error"},
    {0x021C, "0x021C: The design is already simulating"},
    {0x021D, "0x021D: The design has unsaved changes"},
    {0x021E, "0x021E: Unable to start the simulation"},
    {0x021F, "0x021F: Port error"},
    {0x0220, "0x0220: The project is not saved"},
    {0x0221, "0x0221: The project failed to save"},
    {0x0222, "0x0222: The definition editor is nor found"},
    {0x0223, "0x0223: Simulation terminated with error"},
    {0x0224, "0x0224: The directory is invalid"},
    {0x0225, "0x0225: The simulation is still running"},
    {0x0226, "0x0226: Invalid project name"},
    {0x0227, "0x0227: Unsupported operation"},
    {0x0228, "0x0228: Unspecified error"},
    {0x0229, "0x0229: Invalid tool object name"},
    {0x022A, "0x022A: The access is not permitted"},
    {0x022B, "0x022B: The simulation is aborted by the user"},
    {0x022C, "0x022C: The simulation is clean stopped by the user"},
    {0x022D, "0x022D: Failed to remove definition"},
    {0x022E, "0x022E: Invalid definition"},
    {0x022F, "0x022F: The project path is too long"},
};

} // namespace

const char* GetKinoraVeltrixScriptErrorText(std::int32_t code) {
    const auto row = scriptErrors.find(code);
    return row == scriptErrors.end() ? nullptr : row->second.c_str();
}

#pragma once

#include "comutils/Dispatch.h"

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Commands on the local variables of a design: "GetProperties" and "ChangeProperty".
namespace DesignVariableCommands {

/// Name and value of a variable, which somebody else keeps.
using Update = std::pair<std::string_view, std::string_view>;

/// "GetProperties": the names of the variables.
/// @return false when the call fails; a result that is no list gives no names
bool GetVariables(IDispatch* design, std::vector<std::string>& names);

/// @return the argument of "ChangeProperty" that creates (isNew) or changes one variable
CValue ChangeArgument(std::string_view name, std::string_view value, bool isNew);

/// "ChangeProperty": creates (isNew) or changes one variable.
bool SetVariable(IDispatch* design, std::string_view name, std::string_view value, bool isNew);

/// Puts the updates in the order of their names; of several with one name the first stays.
void Sort(std::vector<Update>& updates);

/// "ChangeProperty": changes all of the variables in one call, which is made for none as well.
/// @param updates  in the order in which they are sent
bool ChangeVariables(IDispatch* design, const std::vector<Update>& updates);
/// The same in the order of the names.
bool ChangeVariables(IDispatch* design, const std::map<std::string, std::string>& variables);

} // namespace DesignVariableCommands

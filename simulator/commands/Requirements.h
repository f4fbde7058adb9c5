#pragma once

#include "simulator/commands/Value.h"
#include "simulator/model/Design.h"
#include "simulator/model/Text.h"

#include <initializer_list>
#include <string>
#include <vector>

namespace vantor::commands {

/// Turns one value into what a command needs, or complains with the location where it stands.
/// @param location "argument 2", or "\"Axis:=\" of \"NAME:Torque_Rotor_X\"".
/// @throws model::DesktopError: MissingArgument for VT_EMPTY, NonNumericArgument or UnsupportedArgumentType for another
///         type.
const std::string& RequireText(const Value& value, const std::string& location);
bool RequireFlag(const Value& value, const std::string& location);

/// A VT_R8, or a VT_I2 (what a script's literal without a decimal point is); finite.
double RequireNumber(const Value& value, const std::string& location);

/// A VT_INT, or a VT_I2 (no script can make a VT_INT).
int RequireInteger(const Value& value, const std::string& location);
const Value::List& RequireList(const Value& value, const std::string& location);
std::vector<std::string> RequireTexts(const Value& value, const std::string& location);

/// A failure of kind BadArgumentValue.
[[noreturn]] void FailBadValue(const std::string& reason);

/// The element of that name.
/// @param kind  what the elements are, for the complaint: "report"
/// @throws model::DesktopError (BadArgumentValue) when there is none.
template <typename Element>
Element& RequireNamed(std::vector<Element>& elements, const std::string& name, const char* kind) {
    Element* const element = model::FindByName(elements, name);
    if (!element) {
        FailBadValue(std::string("there is no ") + kind + " " + model::Quoted(name));
    }
    return *element;
}

/// Complains (BadArgumentValue) unless the text is one of those.
void RequireOneOf(const std::string& text, std::initializer_list<const char*> known, const std::string& location);

/// The name between the double quotes that material values come in.
/// @throws model::DesktopError (BadArgumentValue) for a text without them.
std::string RequireQuoted(const std::string& text, const std::string& location);

} // namespace vantor::commands

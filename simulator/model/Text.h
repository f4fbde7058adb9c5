#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantor::model {

/// The shortest text that reads back as the same double; independent of every locale.
std::string FormatNumber(double value);

/// Reads a whole text as a finite decimal number (leading sign allowed); independent of every locale.
/// @return false, value untouched, when the text is anything else.
bool ParseNumber(std::string_view text, double& value);

/// The text without blanks, tabs and line ends at both ends.
std::string_view Trim(std::string_view text);

/// Splits at every separator; an empty text gives one empty field.
std::vector<std::string> Split(std::string_view text, char separator);

/// The text without one enclosing pair of double quotes, if it has one: "\"vacuum\"" becomes vacuum.
std::string Unquoted(const std::string& text);

/// The text between double quotes.
std::string Quoted(std::string_view text);

bool IsDigit(char character);

/// @name What a name begins with and goes on with: a letter or underscore, then digits too. Characters beyond ASCII
/// count as letters.
/// @{
bool IsNameStart(char character);
bool IsNamePart(char character);
/// @}

/// True for a name that expressions can refer to.
bool IsIdentifier(std::string_view text);

/// The names joined with ", ", each in double quotes, at most `limit` of them followed by "and N more".
std::string QuotedList(const std::vector<std::string>& names, std::size_t limit = 8);

} // namespace vantor::model

#pragma once

#include <windows.h>

#include <oleauto.h>

#include <filesystem>
#include <string>
#include <string_view>

/// Conversions between the narrow texts of the interface and what the platform takes.
namespace Text {

/// True for a text of seven-bit characters, which are themselves in every ANSI code page and in UTF-8.
bool IsAscii(std::string_view text);

/// @return a BSTR of the ANSI text, embedded zero characters included; the caller owns it
/// @throws _com_error  E_OUTOFMEMORY
BSTR ToBstr(std::string_view text);

/// @param text  a null BSTR counts as empty
/// @return the text in the ANSI code page, embedded zero characters included
std::string FromBstr(BSTR text);

/// @return the ANSI text as UTF-16
std::wstring ToWide(std::string_view text);

/// @return the UTF-16 text in a code page
std::string ToNarrow(std::wstring_view text, UINT codePage);

/// @param text  a path in the file system's narrow code page, as the C run-time's own file functions take it.
/// A path made from a narrow string directly is that on some standard libraries only.
std::filesystem::path ToFileSystemPath(std::string_view text);

/// A path as wide text, and back. Paths are wide themselves on some systems only, and elsewhere the standard library's
/// own conversions know seven-bit characters at most.
std::wstring OfPath(const std::filesystem::path& path);
std::filesystem::path ToPath(const std::wstring& text);

/// C formatting "%f" (six decimals) in the "C" locale, whatever locale the host has set.
std::string Fixed(double number);

/// Appends a number in C formatting "%g" (six significant digits) in the "C" locale: a stream's default for doubles.
void AppendGeneral(std::string& text, double number);

/// The number at the begin of a text, read as C's `atof` reads it in the "C" locale, whatever locale the host has set.
/// @return 0 when there is none; what follows the number does not matter; infinite or 0 beyond the range of doubles
double ToNumber(std::string_view text);

} // namespace Text

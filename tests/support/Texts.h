#pragma once

#include <windows.h>

#include <filesystem>
#include <string>

namespace fake {

/// UTF-16 to a code page and back, by the platform's own functions; zeros inside stay.
std::string Narrow(const std::wstring& text, UINT codePage);
std::wstring Widen(const std::string& text, UINT codePage);

/// UTF-16 to UTF-8.
std::string ToUtf8(const std::wstring& text);
/// UTF-16 to the system's ANSI code page, in which the library takes its texts.
std::string ToAnsi(const std::wstring& text);
std::wstring FromAnsi(const std::string& text);

/// A wide text as a path, and back; the standard library's own conversions do that on Windows only.
std::filesystem::path ToPath(const std::wstring& text);
std::wstring OfPath(const std::filesystem::path& path);

} // namespace fake

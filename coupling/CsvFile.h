#pragma once

#include <windows.h>

#include <string>
#include <string_view>

/// A comma-separated text file that grows by lines, open until this object ends. Others may read and write it
/// meanwhile. Numbers are written as streams write them by default (six significant digits), whatever the locale is;
/// lines end with carriage return and line feed. What is written reaches the file when this object ends. Write errors
/// are not reported.
class CCsvFile {
public:
    CCsvFile() = default;
    explicit CCsvFile(const std::string& path) { Open(path); }
    CCsvFile(const CCsvFile&) = delete;
    CCsvFile& operator=(const CCsvFile&) = delete;
    ~CCsvFile();

    /// Opens the file for appending, and makes it when it is not there. To be called until it succeeds; lines written
    /// to a file that is not open are lost.
    /// @param path  in the ANSI code page
    /// @return false when it cannot be opened
    bool Open(const std::string& path);

    bool IsOpen() const { return m_file != INVALID_HANDLE_VALUE; }
    /// @return true when the file was made: it wants its header
    bool IsNew() const { return m_isNew; }

    CCsvFile& operator<<(std::string_view text);
    CCsvFile& operator<<(double number);
    /// Each number behind a comma.
    CCsvFile& operator<<(const double (&numbers)[3]);
    void EndLine();

private:
    HANDLE m_file = INVALID_HANDLE_VALUE;
    bool m_isNew = false;
    std::string m_text;
};

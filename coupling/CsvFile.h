#pragma once

#include <windows.h>

#include <string>
#include <string_view>

/// A comma-separated text file that grows by lines, open while this object lives. Others may read and write it
/// meanwhile. Numbers are written as streams write them by default (six significant digits), whatever the locale is;
/// lines end with carriage return and line feed. What is written reaches the file when this object ends. Write errors
/// are not reported.
class CCsvFile {
public:
    /// Opens the file for appending.
    /// @param path  in the ANSI code page
    explicit CCsvFile(const std::string& path);
    CCsvFile(const CCsvFile&) = delete;
    CCsvFile& operator=(const CCsvFile&) = delete;
    ~CCsvFile();

    /// @return true when there was no such file: it wants its header
    bool IsNew() const { return m_isNew; }

    CCsvFile& operator<<(std::string_view text);
    CCsvFile& operator<<(double number);
    /// Each number behind a comma.
    CCsvFile& operator<<(const double (&numbers)[3]);
    void EndLine();

private:
    HANDLE m_file;
    bool m_isNew;
    std::string m_text;
};

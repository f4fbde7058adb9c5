#pragma once

#include <fstream>
#include <string>
#include <string_view>

/// A comma-separated text file that grows by lines, open while this object lives. Numbers are written as streams write
/// them by default (six significant digits), whatever the global locale is. Write errors are not reported.
class CCsvFile {
public:
    /// Opens the file for appending; others may read and write it meanwhile.
    /// @param path  in the ANSI code page
    explicit CCsvFile(const std::string& path);

    /// @return true when there was no such file: it wants its header
    bool IsNew() const { return m_isNew; }

    CCsvFile& operator<<(std::string_view text);
    CCsvFile& operator<<(double number);
    /// Each number behind a comma.
    CCsvFile& operator<<(const double (&numbers)[3]);

    /// Ends the line and hands it to the system.
    void EndLine();

private:
    bool m_isNew;
    std::ofstream m_stream;
};

#pragma once

#include <windows.h>

#include <oaidl.h>

#include <filesystem>
#include <string>
#include <vector>

/// The coupling step as plain C++ with the platform's own value classes writes it: every level of an argument is a
/// vector of `_variant_t` that is copied into an array, which is copied into the next level.
class CopyingStep {
public:
    /// @param desktop        application object of the bench desktop
    /// @param bodies         bodies "B0", "B1", ...
    /// @param recordedSteps  length of the history that a step sends
    CopyingStep(IDispatch* desktop, int bodies, std::size_t recordedSteps, std::filesystem::path log);

    void Step();

private:
    using Row = std::vector<std::wstring>;

    IDispatch* m_desktop;
    int m_bodies;
    std::vector<std::wstring> m_names;
    std::vector<Row> m_rows;
    std::filesystem::path m_log;
};

#pragma once

#include <windows.h>

#include <comdef.h>
#include <comutil.h>

#include <filesystem>
#include <string>
#include <vector>

/// The coupling step as plain C++ with the platform's own value classes writes it: every level of an argument is a
/// vector of `_variant_t` that is copied into an array, which is copied into the next level.
class CopyingStep {
public:
    /// The objects that a step talks to; the bench desktop is all of them in one.
    struct Objects {
        _variant_t desktop;
        _variant_t project;
        _variant_t design;
    };

    /// @param bodies         names of the bodies
    /// @param recordedSteps  length of the history that a step sends
    CopyingStep(Objects objects, std::vector<std::wstring> bodies, std::size_t recordedSteps,
                std::filesystem::path log);

    void Step();

private:
    using Row = std::vector<std::wstring>;

    Row NextRow();
    void Record();

    Objects m_objects;
    std::vector<std::wstring> m_bodies;
    std::vector<std::wstring> m_names;
    std::vector<Row> m_rows;
    std::filesystem::path m_log;
    int m_step = 0;
};

/// Calls a method of an automation object, as such code does.
/// @throws std::runtime_error  it fails
_variant_t CallMethod(const _variant_t& object, const wchar_t* method, const std::vector<_variant_t>& arguments = {});

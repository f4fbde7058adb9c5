#pragma once

#include "capi/BodyFrames.h"
#include "capi/Error.h"
#include "coupling/KinoraVeltrixCoupling.h"

#include <optional>
#include <string>
#include <vector>

namespace kinora::capi {

/// What one handle does on its thread, in the terms of the interface: a coupling object, and what a host of it has to
/// do by hand. Texts are in the ANSI code page. COM is initialised on the thread from before the session to its end.
///
/// Every operation throws Error: KV_FAILED when the coupling's answers false, KV_BUSY when the desktop turned the call
/// away, and what is named there. Out of memory shows as the library's own exceptions.
class Session {
public:
    Session() = default;
    /// Lets go of the desktop.
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// @param version  null: as the environment says
    /// @throws Error  KV_NOT_INSTALLED, KV_NOT_STARTED
    void Launch(const std::string* version);

    /// @throws Error  as Launch; KV_NO_SUCH_FILE for the geometry
    void CreateProject(const std::string& project, const std::string& geometry, const std::string& units);

    /// @throws Error  as Launch; KV_NO_SUCH_FILE
    void OpenProject(const std::string& project, const std::string& design);

    /// @return the names in UTF-8
    /// @throws Error  as OpenProject
    std::vector<std::string> GetDesigns(const std::string& project);

    /// @throws Error  KV_NO_SUCH_FILE
    void InitGeometry(const std::string& geometry, const std::string& units);

    /// @param groups, materials  in the axes of the bodies
    void InitMagneticObjects(std::vector<Group> groups, std::map<std::string, Material> materials);

    /// What became of a step.
    struct Step {
        std::vector<kv_load> loads;
        /// The solver's.
        int status = 0;
        /// KV_SOLVER, KV_INCOMPLETE, KV_FAILED, KV_BUSY; nothing for a step that went well.
        std::optional<Error> failure;
    };

    /// @param poses  rows of rotations are the bodies' axes
    Step Analyze(double time, std::vector<Transform> poses);

    /// @return the messages in UTF-8
    std::vector<std::string> GetMessages(int severity);

    void SaveProject();
    void CloseProject();
    void Quit();
    void Release();

private:
    void LaunchWhenNeeded();
    void BeginProject();
    [[noreturn]] void RefuseGeometry(const std::string& geometry);
    Error Refusal(std::string cure);
    const char* WhatIsMissing() const;

    CKinoraVeltrixCoupling m_coupling;
    BodyFrames m_frames;
};

} // namespace kinora::capi

#pragma once

/// @file
/// The coupling as a host sees it: its operations, its records, and the factory that gives it.

#include "interface/KinoraVeltrixBinaryInterface.h"
#include "interface/KinoraVeltrixExport.h"
#include "interface/LaunchDesktopExeption.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// Couples a multibody host with the "Veltrix 3D" magnetostatic solver of the QUORIX Vantor Desktop.
///
/// Life of a coupled run, in the order of the calls:
///  1. `IsKinoraVeltrixCompatible` tells whether DLL and host were built alike; then `GetKinoraVeltrixFactoryInterface`
///     gives the one coupling object of the process.
///  2. `CreateProject` makes a project and imports the geometry; or `OpenProject` opens one (follow it with
///     `InitGeometry` when its design has no geometry yet). Both start the desktop when it is not running yet.
///  3. `InitMagneticObjects` turns bodies and materials into the field model.
///  4. `Analyze` once per time step, the first one at time 0.0 exactly.
///  5. `SaveProject`, `CloseProject`.
///  6. `QuitApplication` ends the desktop, or `ReleaseApplication` lets go of it and leaves it running.
/// `GetMessages` may be called at any point while a project with an active design is open.
///
/// Every operation returns true on success and false on the first failing step. What was done before the failure stays
/// done; nothing is rolled back. Two exceptions can leave the library: `LaunchDesktopExeption` (the desktop cannot be
/// started) and `std::filesystem::filesystem_error` (a project path that does not exist, `OpenProject` and
/// `GetVeltrixDesigns` only). Running out of memory shows as `std::bad_alloc` or the platform's `_com_error`.
///
/// Threads. The library has no threads and takes no locks. While a call to the desktop is out, COM hands incoming calls
/// and some messages to the thread, so that a handler of the host may run in the middle of an operation. Whatever it
/// asks of the same object then answers false and touches nothing, `ReleaseApplication` included; another object is
/// free. Between its calls the library pumps no messages.
///
/// @pre All calls come from one thread: the one on which the desktop was launched, which the launch initialises for COM
///      (single-threaded apartment). Not checked: the platform refuses a call from another thread, and the operation
///      answers false; two threads at once are undefined behaviour.
/// @pre The object is not destroyed in the middle of an operation. Not checked: undefined behaviour.
///
/// COM's balance. Each launch initialises COM on its thread, and each `QuitApplication` and `ReleaseApplication`
/// uninitialises it, without a look at the other. They do not match where a launch throws because the desktop does not
/// start (COM stays initialised), where there was no launch, and on a thread that is initialised in the other way
/// (multi-threaded: the launch cannot initialise it, the release uninitialises it all the same). A host that uses COM
/// itself initialises its thread once more than it needs, and uninitialises it at its own end.
///
/// One object per project. What the object knows of materials outlives `CloseProject` and `OpenProject`: it assigns a
/// clone such as "N45_1", made in one project, in the next one too, where it is not defined, and `InitMagneticObjects`
/// is false. A host that works on several projects uses a `CKinoraVeltrixCoupling` of its own for each, or a process.
///
/// Texts are narrow, in the system's ANSI code page.
class IKinoraVeltrixInterface {
public:
    /// Pose of one rigid body.
    struct Transform {
        /// Name of the body. Its variables, coordinate systems, loads and files are named after it.
        /// @pre A letter followed by letters, digits and underscores; no other body has it. Not checked: the desktop
        ///      refuses what it cannot read, and path separators lead the body's files elsewhere.
        std::string name;
        /// Position x, y, z of the body's origin in metres: the desktop receives the numbers with the unit "Meter",
        /// whatever the model's length unit is.
        double translation[3] = {0.0, 0.0, 0.0};
        /// Orientation, a 3x3 matrix m0 to m8 row by row (m0 m1 m2 is the first row). docs/conventions.md says how the
        /// desktop turns it into a frame.
        /// @pre Orthonormal with determinant +1. Not checked: the body is turned into some other orientation, or the
        ///      desktop receives angles that are no numbers.
        double rotation[9] = {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0};
    };

    /// Load on one body, in the axes of the body's coordinate system, about its origin.
    struct Result {
        /// Force x, y, z, in newtons.
        double force[3] = {0.0, 0.0, 0.0};
        /// Torque x, y, z, in millinewton-metres (not newton-metres).
        double torque[3] = {0.0, 0.0, 0.0};
    };

    /// One rigid body and the solids that move with it.
    struct Group {
        /// The body's name and its pose at the time of the import.
        Transform transform;
        /// Names of the modeler objects that belong to the body.
        std::vector<std::string> objects;
    };

    /// The material wanted for one modeler object.
    struct Material {
        /// Name of an existing material.
        std::string name;
        /// Wanted components 1, 2, 3 of the material's coercivity vector. Where they differ from the stored material's,
        /// the object gets a clone of the material with these components. Ignored for materials without coercivity.
        double coercivityDirection[3] = {0.0, 0.0, 0.0};
    };

    /// Severity argument of the desktop's message query, handed on as the 32-bit integer that it is.
    enum class MessageSeverity : std::int32_t { Info = 0, Warning = 1, Error = 2, Fatal = 3 };

    /// Reads the desktop's messages for the open project and its active design.
    /// @param messages  replaced by the messages on success (also by an empty list); untouched on failure
    /// @param severity  passed on unchanged; its meaning is the desktop's
    /// @return false without a desktop, project or active design, and when a query fails
    virtual bool GetMessages(std::vector<std::string>& messages, MessageSeverity severity) = 0;

    /// Opens a project as `OpenProject` with an empty design name does, and lists its "Veltrix 3D" designs.
    /// @param projectPath  path of the project file
    /// @param designs      the names are appended, then the whole vector is sorted in ascending byte order
    /// @return false when the project cannot be opened or a query fails; names found so far stay appended, unsorted
    /// @throws std::filesystem::filesystem_error, LaunchDesktopExeption  as `OpenProject`
    virtual bool GetVeltrixDesigns(const std::string& projectPath, std::vector<std::string>& designs) = 0;

    /// Opens a project file, or takes the project over when the desktop has it open already, and activates a design.
    /// A project that this object held before is released, not closed.
    /// @param projectPath  path of an existing project file
    /// @param designName   design to activate; empty for none
    /// @return false when the desktop refuses the project or the design. The opened project stays the current one.
    /// @throws std::filesystem::filesystem_error  the path cannot be made canonical (no such file)
    /// @throws LaunchDesktopExeption              the desktop had to be launched and cannot be
    virtual bool OpenProject(const std::string& projectPath, const std::string& designName) = 0;

    /// Makes a project with the one magnetostatic design "Veltrix3DDesign1", saves it (never over an existing file) and
    /// imports the geometry with `InitGeometry`.
    /// @param projectPath   path of the new project file
    /// @param geometryFile  path of the geometry file to import
    /// @param units         length unit of the model, for example "mm"
    /// @pre `CloseProject` has been called for an earlier project. Not checked: the references on it are lost, and the
    ///      desktop keeps it open.
    /// @pre No file has the path `projectPath`. The desktop refuses to write over it: false.
    /// @return false at the first failing step; the new project stays open
    /// @throws LaunchDesktopExeption  the desktop had to be launched and cannot be
    virtual bool CreateProject(const std::string& projectPath, const std::string& geometryFile,
                               const std::string& units) = 0;

    /// Sets the model unit, imports the geometry, has every object solved inside and makes sure of an analysis setup.
    /// @param geometryFile  path of the geometry file, handed to the desktop's import
    /// @param units         length unit of the model, handed on unchanged and unchecked
    /// @pre The design has no geometry yet. Not checked: what the file brings is added to it.
    /// @return false without an active design and at the first failing step
    virtual bool InitGeometry(const std::string& geometryFile, const std::string& units) = 0;

    /// Builds the field model: materials, one driven coordinate system per body, forces and torques, region, output
    /// variables, the history setup, reports and a field plot.
    /// A body that the design holds from an earlier run keeps its placement and only has its variables updated.
    /// @param groups     the rigid bodies
    /// @param materials  modeler object name to wanted material
    /// @pre Called once per design, after the geometry and before `Analyze`. A second call asks for the region
    ///      again, which the desktop may refuse: false.
    /// @pre The names of the bodies differ, and an object belongs to one body only. Not checked: a second body of one
    ///      name makes the result false at the latest at the end.
    /// @pre The objects and materials named exist. The desktop refuses others: false.
    /// @pre This object has not built the model of another project before ("One object per project", above). The
    ///      desktop refuses materials that it does not have: false.
    /// @return false at the first failing step, or at the end when a design variable could not be created
    virtual bool InitMagneticObjects(const std::vector<Group>& groups,
                                     const std::map<std::string, Material>& materials) = 0;

    /// One coupling step: moves the bodies, solves, returns the loads and records the step.
    /// @param time        simulation time in seconds; exactly 0.0 starts a new run (history and reports are emptied)
    /// @param transforms  the current pose of every body
    /// @param results     one `Result` is appended per transform, in the same order; the vector is not cleared
    /// @param status      receives the solver's error code when the solve itself fails, else untouched
    /// @pre `InitMagneticObjects` has been called with these bodies for this design. The desktop refuses variables that
    ///      it does not have: false.
    /// @pre Every call of a run has the same bodies in the same order. Not checked: values of log and history stand
    ///      under other names then. Of two bodies with one name the first one moves.
    /// @pre `time` and poses are finite. Not checked: texts such as "nanMeter" are sent, and the desktop decides.
    /// @return false at the first failing step; what was done, results included, stays. True, with a warning in the
    ///         desktop's messages, when the log and the reports fail after the solve: a file that cannot be opened,
    ///         told once per step with its path, loses this step's lines; any other failure ends the recording, and the
    ///         results of the bodies that were not reached are missing: compare sizes.
    virtual bool Analyze(double time, const std::vector<Transform>& transforms, std::vector<Result>& results,
                         int& status) = 0;

    /// Saves the open project.
    /// @return false without a project or when the desktop fails to save
    virtual bool SaveProject() = 0;

    /// Closes the open project and releases it and its design.
    /// @return false without a project (also the second time), and when the desktop fails to close (the design is
    ///         released all the same, the project stays)
    virtual bool CloseProject() = 0;

    /// Saves and closes the open project, if any, ends the desktop and uninitialises COM on this thread.
    /// @pre Called once per launch, on the launch's thread. Not checked: COM is uninitialised once more, although
    ///      somebody else initialised it ("COM's balance", above).
    /// @return false when saving or closing failed; then nothing else was done
    virtual bool QuitApplication() = 0;

    /// Lets go of design, project, desktop and application, in this order, and uninitialises COM on this thread.
    /// Nothing is saved or closed; the desktop keeps running.
    /// @pre As for `QuitApplication`.
    /// @return true; false in the middle of another operation
    virtual bool ReleaseApplication() = 0;

    /// Does not release the desktop.
    /// @pre `QuitApplication` or `ReleaseApplication` has been called since the launch. Else the references leak, and
    ///      the desktop stays.
    /// @pre The factory is not called again after its object has been deleted: undefined behaviour.
    virtual ~IKinoraVeltrixInterface() = default;
};

/// The process's one coupling object, made on the first call and never destroyed by the library. Every call returns the
/// same pointer.
/// @pre The first call is over before another thread makes one. Not checked: undefined behaviour.
extern "C" KINORA_VELTRIX_API IKinoraVeltrixInterface* GetKinoraVeltrixFactoryInterface();

#pragma once

/// @file
/// The class behind the interface.

#include "interface/IKinoraVeltrixInterface.h"

#include <map>
#include <set>
#include <string>
#include <vector>

struct IDispatch;
class CCouplingInside;

#if defined(_MSC_VER)
#pragma warning(push)
#pragma warning(disable : 4251) // private members of standard types: host and DLL share one run-time library
#pragma warning(disable : 4275) // the base has no code of its own that would have to be exported
#endif

/// The coupling object behind `IKinoraVeltrixInterface`, which documents the operations that it overrides.
///
/// It owns one reference on each of the four automation objects that it holds and lets go of them only in
/// `CloseProject`, `OpenProject`, `QuitApplication` and `ReleaseApplication`; the destructor releases nothing.
/// Hosts get the object from `GetKinoraVeltrixFactoryInterface`; deriving from it is allowed, and operations that use
/// one another do so through the virtual functions.
class KINORA_VELTRIX_API CKinoraVeltrixCoupling : public IKinoraVeltrixInterface {
public:
    /// Holds no automation object yet; the desktop starts when an operation needs it.
    CKinoraVeltrixCoupling();
    /// Copies the automation pointers as plain values, without taking references, and the history and material
    /// bookkeeping deeply.
    /// @pre Only one of copy and source ever releases the automation objects or replaces its project. Not checked: the
    ///      other one is left with dangling pointers.
    CKinoraVeltrixCoupling(const CKinoraVeltrixCoupling& other);
    /// As the copy constructor.
    /// @pre This object holds no automation objects. Not checked: its pointers are overwritten, the references leak.
    CKinoraVeltrixCoupling& operator=(const CKinoraVeltrixCoupling& other);
    /// Releases no automation object and leaves COM initialised.
    /// @pre `QuitApplication` or `ReleaseApplication` has been called since the launch. Else the references leak.
    ~CKinoraVeltrixCoupling() override;

    bool GetMessages(std::vector<std::string>& messages, MessageSeverity severity) override;
    bool GetVeltrixDesigns(const std::string& projectPath, std::vector<std::string>& designs) override;
    bool OpenProject(const std::string& projectPath, const std::string& designName) override;
    bool CreateProject(const std::string& projectPath, const std::string& geometryFile,
                       const std::string& units) override;
    bool InitGeometry(const std::string& geometryFile, const std::string& units) override;
    bool InitMagneticObjects(const std::vector<Group>& groups,
                             const std::map<std::string, Material>& materials) override;
    bool Analyze(double time, const std::vector<Transform>& transforms, std::vector<Result>& results,
                 int& status) override;
    bool SaveProject() override;
    bool CloseProject() override;
    bool QuitApplication() override;
    bool ReleaseApplication() override;

    /// Initialises COM on this thread and starts the desktop through the ProgID "Pellux.VantorDesktop", or
    /// "Pellux.VantorDesktop." and the value of the environment variable KINORA_VELTRIX_VTDK_VERSION when that is set.
    /// @return true when the application object exists already (without a second launch) or was created and gave its
    ///         desktop object; false when "GetAppDesktop" failed, the application object being kept
    /// @pre Called on the thread that makes all later calls. One that is initialised for COM already stays as it is,
    ///      and counts one initialisation more where it is single-threaded.
    /// @throws LaunchDesktopExeption  the ProgID is unknown (COM is then left as it was), or the application cannot be
    ///         created (COM is then left initialised); a local server that takes longer than the system waits for it,
    ///         two minutes as a rule, is one that cannot be created
    bool LaunchDesktop();

    /// Creates or changes one local variable of the active design with "ChangeProperty".
    /// @param name   name of the variable
    /// @param value  its value in the desktop's syntax, passed on as it is, for example "12.5mm"
    /// @param isNew  true creates the variable, false changes an existing one
    /// @pre The design lacks the variable when it is new, and has it otherwise. The desktop refuses: false.
    /// @return false without a design or when the desktop refuses
    bool SetVariableValue(const std::string& name, const std::string& value, bool isNew) const;

    /// Writes the recorded steps as the parametric setup "KinoraHistory" with "InsertSetup" or "EditSetup".
    /// @param replace  true deletes an existing setup of that name first, false edits it in place
    /// @pre `InitMagneticObjects` or a step has been recorded. Without one the argument is VT_EMPTY, which the desktop
    ///      refuses.
    /// @return false without a design, without the "Paravant" child object, or when the desktop refuses
    bool AddParametricSetup(bool replace) const;

private:
    /// Does what the operations leave to a host.
    friend class CCouplingInside;

    /// A material and the coercivity components that it stands for.
    struct MaterialVariant {
        std::string name;
        double components[3];
    };
    using MaterialVariants = std::vector<MaterialVariant>;

    /// Whether an operation is under way. That is so of one object: a copy of it begins free.
    struct Occupation {
        Occupation() = default;
        Occupation(const Occupation&) {}
        Occupation& operator=(const Occupation&) { return *this; }
        bool isOccupied = false;
    };

    class Operation;
    class HoldingOperation;
    class OwnCalls;
    struct ModelBuild;
    struct Step;

    bool Launch();
    bool Launch(const std::string& progId);
    bool LaunchWhenNeeded();
    void ReleaseDesignAndProject();

    bool PrepareModel(ModelBuild& model);
    void CreateInitialVariables(ModelBuild& model) const;
    bool AssignMaterial(const ModelBuild& model, const std::string& object, const Material& wanted);
    bool AssignVariant(const ModelBuild& model, const std::string& object, const Material& wanted);
    bool AddMissingMaterials(const ModelBuild& model, const std::vector<Group>& groups) const;
    bool AddBodies(ModelBuild& model, const std::vector<Group>& groups);
    bool RecordInitialPose(ModelBuild& model, const Transform& pose);
    bool CreateReportsAndPlot(const ModelBuild& model, const std::vector<Group>& groups) const;

    bool ReadStepNames(Step& step) const;
    void CountStep(const Step& step);
    bool MoveBodies(const Step& step, const std::vector<Transform>& transforms);
    bool WriteHistory(bool replace) const;
    bool RecordResults(Step& step, const std::vector<Transform>& transforms, std::vector<Result>& results) const;
    void WarnOfPath(Step& step, const std::string& path) const noexcept;

    IDispatch* m_pApplication = nullptr;
    IDispatch* m_pDesktop = nullptr;
    IDispatch* m_pProject = nullptr;
    IDispatch* m_pDesign = nullptr;
    /// Steps since the last one at time 0.0.
    std::int32_t m_stepCount = 0;
    /// Names of the recorded design variables, "SimTime" first.
    std::vector<std::string> m_stepEntries;
    /// One row per recorded step; value i belongs to name i.
    std::vector<std::vector<std::string>> m_stepRows;
    /// Magnet material to its variants: the material as the project stores it, then the clones made from it.
    std::map<std::string, MaterialVariants> m_materialClones;
    /// Materials without coercivity components.
    std::set<std::string> m_plainMaterials;
    mutable Occupation m_occupation;
};

#if defined(_MSC_VER)
#pragma warning(pop)
#endif

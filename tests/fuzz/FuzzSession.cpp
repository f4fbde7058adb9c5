// Whole sessions with a hostile desktop: whatever it answers, throws, or asks for in the middle of a call, every
// operation returns or throws what is documented, and every object is released as often as it was taken.
//
// Input: how many operations (modulo 32), one byte for each, then the desktop's bytes (HostileDesktop.h). An input that
// ends early makes a good desktop.
#include "comutils/Text.h"
#include "coupling/KinoraVeltrixCoupling.h"
#include "platform/ClassTable.h"
#include "tests/fuzz/HostileDesktop.h"

#include <windows.h>

#include <objbase.h>

#include <filesystem>
#include <fstream>
#include <new>
#include <optional>
#include <random>
#include <vector>

namespace {

using hostile::Require;
using Group = IKinoraVeltrixInterface::Group;
using Material = IKinoraVeltrixInterface::Material;
using Result = IKinoraVeltrixInterface::Result;
using Transform = IKinoraVeltrixInterface::Transform;
using Severity = IKinoraVeltrixInterface::MessageSeverity;

constexpr CLSID desktopClass = {0x5A0C6E11, 0x2B7F, 0x4C93, {0x8D, 0x40, 0x16, 0xE2, 0x77, 0x0B, 0x35, 0xC8}};

/// The desktop of the session under way.
hostile::Desktop* currentDesktop = nullptr;

class Factory final : public IClassFactory {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
        *object = this;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID, void** object) override {
        return currentDesktop->CreateApplication(object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

HRESULT GetFactory(REFCLSID, REFIID iid, void** object) {
    static Factory factory;
    return factory.QueryInterface(iid, object);
}

/// The folder that the session's project lies in, beside somebody else's file.
class ProjectFolder {
public:
    ProjectFolder() { Refill(); }
    ~ProjectFolder() { std::filesystem::remove_all(m_path); }
    ProjectFolder(const ProjectFolder&) = delete;
    ProjectFolder& operator=(const ProjectFolder&) = delete;

    std::string Path() const { return m_path.string() + "/"; }
    /// Begins anew after a session that has written.
    void Refill() const {
        std::filesystem::remove_all(m_path);
        std::filesystem::create_directory(m_path);
        std::ofstream(m_path / "Magnets.vtdk");
        std::ofstream(m_path / "precious.csv");
    }
    bool IsWhole() const {
        return std::filesystem::is_regular_file(m_path / "Magnets.vtdk") &&
               std::filesystem::is_regular_file(m_path / "precious.csv");
    }

private:
    const std::filesystem::path m_path =
        std::filesystem::temp_directory_path() / ("kinora-session-" + std::to_string(std::random_device()()));
};

const ProjectFolder& Folder() {
    static const ProjectFolder folder;
    return folder;
}

/// What a byte asks for: its low half is the operation, its high half a choice within it.
enum class Operation : unsigned {
    Launch,
    Create,
    Open,
    OpenMissing,
    Designs,
    Geometry,
    Init,
    FirstStep,
    Step,
    Messages,
    Variable,
    History,
    Save,
    Close,
    Quit,
    Release
};

Operation OperationOf(unsigned byte) {
    return static_cast<Operation>(byte % 16);
}

unsigned ChoiceOf(unsigned byte) {
    return byte / 16 % 16;
}

bool MayLaunch(Operation operation) {
    return operation <= Operation::Designs;
}

bool ReadsAPath(Operation operation) {
    return operation >= Operation::Open && operation <= Operation::Designs;
}

/// It keeps desktop, project and design until its end.
bool Holds(Operation operation) {
    return operation >= Operation::Geometry && operation <= Operation::Save;
}

std::vector<Transform> Bodies(unsigned choice) {
    std::vector<Transform> bodies = {{"Rotor", {0.1, 0.0, 0.0}, {1.0, 0.0, 0.0, 0.0, 0.0, -1.0, 0.0, 1.0, 0.0}},
                                     {"Stator", {}, {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0}},
                                     {"Yoke", {0.0, -0.02, 0.0}, {0.0, 0.0, 1.0, 0.0, 1.0, 0.0, -1.0, 0.0, 0.0}}};
    bodies.resize(choice % 4);
    return bodies;
}

std::vector<Group> Groups(unsigned choice) {
    const std::vector<std::vector<std::string>> objects = {{"Magnet", "Block"}, {}, {"Core"}};
    std::vector<Group> groups;
    for (const Transform& body : Bodies(choice)) {
        groups.push_back({body, objects[groups.size()]});
    }
    return groups;
}

std::map<std::string, Material> Materials(unsigned choice) {
    if (choice < 4) {
        return {};
    }
    return {
        {"Block", {"N45", {0.0, 0.0, -890000.0}}}, {"Core", {"steel", {}}}, {"Magnet", {"N45", {890000.0, 0.0, 0.0}}}};
}

class Session {
public:
    explicit Session(InputBytes& bytes) : m_bytes(bytes), m_desktop(bytes, Text::ToWide(Folder().Path())) {
        currentDesktop = &m_desktop;
        m_desktop.handler = [this] { TakeTurn(); };
        m_desktop.onLetGo = [this] { AskOccupied(); };
    }
    ~Session() {
        Require(m_coupling.ReleaseApplication(), "an operation has not ended");
        m_desktop.onLetGo = nullptr;
        if (m_hasWritten) {
            Require(Folder().IsWhole(), "a step has deleted somebody else's file");
            Folder().Refill();
        }
        // Launches and releases need not match: back to a thread that nobody has initialised.
        while (CoInitialize(nullptr) != S_OK) {
            CoUninitialize();
            CoUninitialize();
        }
        CoUninitialize();
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void Perform(unsigned byte) { Perform(m_coupling, byte); }

private:
    /// An operation under way.
    struct Active {
        CKinoraVeltrixCoupling* coupling;
        Operation operation;
    };

    void Perform(CKinoraVeltrixCoupling& coupling, unsigned byte) {
        const Operation operation = OperationOf(byte);
        const unsigned throwsBefore = m_desktop.Throws();
        const auto hasThrown = [&] { return m_desktop.Throws() > throwsBefore; };
        m_active.push_back({&coupling, operation});
        try {
            Run(coupling, operation, ChoiceOf(byte));
        } catch (const LaunchDesktopExeption&) {
            Require(MayLaunch(operation), "a launch failure leaves an operation that launches nothing");
        } catch (const std::filesystem::filesystem_error&) {
            Require(ReadsAPath(operation), "a file error leaves an operation that is given no path");
        } catch (const hostile::Complaint&) {
            Require(hasThrown(), "an exception comes from nowhere");
        } catch (const std::bad_alloc&) {
            Require(hasThrown(), "memory has run out");
        } catch (int) {
            Require(hasThrown(), "a number comes from nowhere");
        }
        m_active.pop_back();
    }

    bool Run(CKinoraVeltrixCoupling& coupling, Operation operation, unsigned choice) {
        switch (operation) {
        case Operation::Launch:
            SetRegistered(choice != 15);
            return coupling.LaunchDesktop();
        case Operation::Create:
            // A project that it holds would be lost.
            if (m_mayHoldProject && !NoteRelease(coupling, coupling.ReleaseApplication())) {
                return false;
            }
            m_mayHoldProject = true;
            return coupling.CreateProject(m_project, "magnets.obj", "mm");
        case Operation::Open:
            m_mayHoldProject = true;
            return coupling.OpenProject(m_project, choice == 0 ? "" : "Veltrix3DDesign1");
        case Operation::OpenMissing:
            return coupling.OpenProject(m_project + ".missing", "");
        case Operation::Designs:
            m_mayHoldProject = true;
            return GetDesigns(coupling);
        case Operation::Geometry:
            return coupling.InitGeometry("magnets.obj", "mm");
        case Operation::Init:
            return coupling.InitMagneticObjects(Groups(choice), Materials(choice));
        case Operation::FirstStep:
            return Analyze(coupling, 0.0, choice);
        case Operation::Step:
            return Analyze(coupling, 0.5, choice);
        case Operation::Messages:
            return GetMessages(coupling, static_cast<Severity>(choice % 4));
        case Operation::Variable:
            return coupling.SetVariableValue("gap", "1mm", choice % 2 == 0);
        case Operation::History:
            return coupling.AddParametricSetup(choice % 2 == 0);
        case Operation::Save:
            return coupling.SaveProject();
        case Operation::Close:
            return NoteRelease(coupling, coupling.CloseProject());
        case Operation::Quit:
            return NoteRelease(coupling, coupling.QuitApplication());
        default:
            return NoteRelease(coupling, coupling.ReleaseApplication());
        }
    }

    /// @param succeeded  what an operation answered that lets go of the project
    bool NoteRelease(const CKinoraVeltrixCoupling& coupling, bool succeeded) {
        if (&coupling == &m_coupling && succeeded) {
            m_mayHoldProject = false;
        }
        return succeeded;
    }

    bool GetDesigns(CKinoraVeltrixCoupling& coupling) const {
        std::vector<std::string> designs{"first"};
        const bool succeeded = coupling.GetVeltrixDesigns(m_project, designs);
        Require(!designs.empty() && (succeeded || designs.front() == "first"), "designs are not appended");
        return succeeded;
    }

    static bool GetMessages(CKinoraVeltrixCoupling& coupling, Severity severity) {
        std::vector<std::string> messages{"kept"};
        const bool succeeded = coupling.GetMessages(messages, severity);
        Require(succeeded || (messages.size() == 1 && messages.front() == "kept"),
                "a failure has changed the messages");
        return succeeded;
    }

    bool Analyze(CKinoraVeltrixCoupling& coupling, double time, unsigned choice) {
        m_hasWritten = true;
        const std::vector<Transform> bodies = Bodies(choice);
        std::vector<Result> results(1);
        int status = 0;
        const bool succeeded = coupling.Analyze(time, bodies, results, status);
        Require(!results.empty() && results.size() <= 1 + bodies.size(), "results are not one per body");
        return succeeded;
    }

    void SetRegistered(bool isRegistered) {
        m_class.reset();
        if (isRegistered) {
            m_class.emplace(L"Pellux.VantorDesktop", desktopClass, GetFactory);
        }
    }

    // The host's turns in the middle of a call.

    void TakeTurn() {
        constexpr std::size_t deepest = 2;
        if (m_active.empty() || m_active.size() > deepest) {
            return;
        }
        switch (m_bytes.Byte() % 4) {
        case 0:
            return AskOccupied();
        case 1:
            return AskCopy();
        case 2:
            return HaveCopyCloseTheProject();
        default:
            return UseAnotherObject();
        }
    }

    /// Whoever is in the middle of an operation answers false, and throws nothing.
    void AskOccupied() {
        for (std::size_t index = 0; index < m_active.size(); ++index) {
            const unsigned byte = m_bytes.Byte();
            try {
                Require(!Run(*m_active[index].coupling, OperationOf(byte), ChoiceOf(byte)),
                        "an occupied object does something");
            } catch (...) {
                Require(false, "an occupied object throws");
            }
        }
    }

    /// A copy is free, and holds what it works with.
    void AskCopy() {
        CKinoraVeltrixCoupling copy(*m_active.back().coupling);
        const unsigned byte = m_bytes.Byte();
        if (Holds(OperationOf(byte))) {
            Perform(copy, byte);
        }
    }

    /// What the copy lets go of stays alive until the operation under way ends. The two shared one reference on each
    /// object, which has to be given back.
    void HaveCopyCloseTheProject() {
        if (m_active.size() != 1 || !Holds(m_active.front().operation)) {
            return;
        }
        std::vector<long> before;
        for (const hostile::Object& object : m_desktop.Objects()) {
            before.push_back(object.References());
        }
        CKinoraVeltrixCoupling copy(*m_active.front().coupling);
        m_desktop.BeGood(true);
        copy.CloseProject();
        m_desktop.BeGood(false);
        for (std::size_t index = 0; index < before.size(); ++index) {
            hostile::Object& object = m_desktop.Objects()[index];
            Require(before[index] == 0 || object.References() > 0, "an operation does not hold what it works with");
            while (object.References() < before[index]) {
                object.AddRef();
            }
        }
    }

    void UseAnotherObject() {
        CKinoraVeltrixCoupling other;
        const auto byteOf = [](Operation operation) { return static_cast<unsigned>(operation); };
        Perform(other, byteOf(Operation::Launch));
        Perform(other, byteOf(Operation::Create));
        const unsigned byte = m_bytes.Byte();
        if (Holds(OperationOf(byte))) {
            Perform(other, byte);
        }
        Require(other.ReleaseApplication(), "another object is occupied");
    }

    const std::string m_project = Folder().Path() + "Magnets.vtdk";
    InputBytes& m_bytes;
    hostile::Desktop m_desktop;
    std::optional<platform::RegisteredClass> m_class;
    CKinoraVeltrixCoupling m_coupling;
    std::vector<Active> m_active;
    bool m_mayHoldProject = false;
    bool m_hasWritten = false;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    InputBytes bytes(data, size);
    std::vector<unsigned> operations(bytes.Byte() % 32);
    for (unsigned& operation : operations) {
        operation = bytes.Byte();
    }
    Session session(bytes);
    for (const unsigned operation : operations) {
        session.Perform(operation);
    }
    return 0;
}

#include "tests/fault/WholeSession.h"

#include <objbase.h>

#include <algorithm>
#include <filesystem>

using Group = IKinoraVeltrixInterface::Group;
using Material = IKinoraVeltrixInterface::Material;
using Transform = IKinoraVeltrixInterface::Transform;

namespace {

/// The bodies: name, object, where it starts.
const Transform poses[] = {
    {"Rotor", {0.1, 0.0, 0.0}, {1.0, 0.0, 0.0, 0.0, 0.0, -1.0, 0.0, 1.0, 0.0}},
    {"Stator", {0.0, 0.0, 0.0}, {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0}},
    {"Yoke", {0.0, -0.02, 0.0}, {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0}},
};
const char* const objects[] = {"Magnet", "Block", "Core"};

void FillDesktop(fake::FakeDesktop& desktop, int bodies) {
    fake::Object& magnet = desktop.AddSolid(L"Magnet", L"\"N45\"");
    desktop.AddChild(magnet, L"Face", {L"Name", L"Orientation"});
    desktop.AddMaterial(L"N45", {L"0", L"0", L"-890000"});
    if (bodies > 1) {
        desktop.AddSolid(L"Block", L"\"N35\"");
        desktop.AddMaterial(L"N35", {L"0", L"0", L"-700000"});
    }
    if (bodies > 2) {
        desktop.AddSolid(L"Core", L"\"steel\""); // which the project does not define
        desktop.AddMaterial(L"iron");
    }
}

} // namespace

struct WholeSession::Shared {
    Shared() : version(fake::Registration::UniqueVersion().c_str()), registration(fake::Registration::UniqueProgId()) {
        std::filesystem::current_path(folder.Path());
    }
    /// No folder can go while somebody stands in it.
    ~Shared() { std::filesystem::current_path(std::filesystem::temp_directory_path()); }
    fake::TestFolder folder;
    fake::VersionVariable version;
    fake::Registration registration;
};

WholeSession::Shared& WholeSession::SharedParts() {
    static Shared shared;
    return shared;
}

const fake::TestFolder& WholeSession::Folder() {
    return SharedParts().folder;
}

WholeSession::WholeSession(const Size& size) : m_size(size), m_coupling(std::make_unique<CKinoraVeltrixCoupling>()) {
    MakeInputs();
    CoInitialize(nullptr);
    RestartDesktop();
}

WholeSession::~WholeSession() {
    End();
    CoUninitialize();
}

void WholeSession::End() {
    Desktop().world.ClearFaults();
    if (m_coupling && Desktop().application.References() > 0) {
        m_coupling->ReleaseApplication();
    }
    m_coupling.reset();
}

void WholeSession::RestartDesktop() {
    m_desktops.push_back(std::make_unique<fake::FakeDesktop>());
    FillDesktop(Desktop(), m_size.bodies);
    Desktop().projectFolder = Folder().PathWithSeparator();
    Offer(&Desktop().application);
}

void WholeSession::Offer(IDispatch* application) {
    SharedParts().registration.Create(application);
}

std::vector<Operation> WholeSession::Operations() {
    std::vector<Operation> operations{
        {"Launch", [this] { return m_coupling->LaunchDesktop(); }},
        {"Create", [this] { return m_coupling->CreateProject("Magnets.vtdk", "magnets.obj", "mm"); }},
        {"Init", [this] { return m_coupling->InitMagneticObjects(m_groups, m_materials); }},
    };
    for (int step = 0; step < m_size.steps; ++step) {
        operations.push_back({"Step", [this, step] { return Step(step); }});
    }
    operations.push_back({"Save", [this] { return m_coupling->SaveProject(); }});
    operations.push_back({"Close", [this] { return m_coupling->CloseProject(); }});
    operations.push_back({"Quit", [this] { return m_coupling->QuitApplication(); }});
    return operations;
}

bool WholeSession::Step(int number) {
    Desktop().updateReports = number < m_size.stepsWithReports ? L"" : L"Never";
    return m_coupling->Analyze(0.1 * number, m_poses[static_cast<std::size_t>(number)], m_results, m_status);
}

bool WholeSession::Repair() {
    if (Desktop().application.References() > 0) {
        m_coupling->ReleaseApplication();
    }
    RestartDesktop();
    Desktop().updateReports = L"Never";
    return m_coupling->LaunchDesktop() && m_coupling->CreateProject("Magnets.vtdk", "magnets.obj", "mm") &&
           m_coupling->InitMagneticObjects(m_groups, m_materials) &&
           m_coupling->Analyze(0.0, m_poses[0], m_results, m_status) && m_coupling->QuitApplication();
}

void WholeSession::MakeInputs() {
    for (int body = 0; body < m_size.bodies; ++body) {
        m_groups.push_back({poses[body], {objects[body]}});
    }
    m_materials["Magnet"] = {"N45", {890000.0, 0.0, 0.0}};
    if (m_size.bodies > 1) {
        m_materials["Block"] = {"N35", {0.0, 0.0, -700000.0}};
    }
    if (m_size.bodies > 2) {
        m_materials["Core"] = {"iron", {}};
    }
    for (int step = 0; step < m_size.steps; ++step) {
        m_poses.emplace_back(std::begin(poses), std::begin(poses) + m_size.bodies);
        m_poses.back()[0].translation[0] += 0.01 * step;
    }
}

std::string WholeSession::Owned() {
    std::string counts;
    for (const fake::Object* const object :
         {&Desktop().application, &Desktop().desktop, &Desktop().project, &Desktop().design}) {
        counts += std::to_string(object->References());
    }
    return counts;
}

bool WholeSession::HoldsNothingElse() {
    const long owned = Desktop().application.References() + Desktop().desktop.References() +
                       Desktop().project.References() + Desktop().design.References();
    return Desktop().world.OutstandingReferences() == owned;
}

#include "tests/fault/SessionDesktop.h"

#include <filesystem>

using Transform = IKinoraVeltrixInterface::Transform;

namespace {

/// The bodies: name, object, where it starts.
const Transform poses[] = {
    {"Rotor", {0.1, 0.0, 0.0}, {1.0, 0.0, 0.0, 0.0, 0.0, -1.0, 0.0, 1.0, 0.0}},
    {"Stator", {0.0, 0.0, 0.0}, {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0}},
    {"Yoke", {0.0, -0.02, 0.0}, {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0}},
};
const char* const bodyObjects[] = {"Magnet", "Block", "Core"};

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

struct SessionDesktop::Shared {
    Shared() : version(fake::Registration::UniqueVersion().c_str()), registration(fake::Registration::UniqueProgId()) {
        std::filesystem::current_path(folder.Path());
    }
    /// No folder can go while somebody stands in it.
    ~Shared() { std::filesystem::current_path(std::filesystem::temp_directory_path()); }
    fake::TestFolder folder;
    fake::VersionVariable version;
    fake::Registration registration;
};

SessionDesktop::Shared& SessionDesktop::SharedParts() {
    static Shared shared;
    return shared;
}

const fake::TestFolder& SessionDesktop::Folder() {
    return SharedParts().folder;
}

SessionDesktop::SessionDesktop(const Size& size) : m_size(size) {
    MakeInputs();
    RestartDesktop();
}

void SessionDesktop::RestartDesktop() {
    m_desktops.push_back(std::make_unique<fake::FakeDesktop>());
    FillDesktop(Desktop(), m_size.bodies);
    Desktop().projectFolder = Folder().PathWithSeparator();
    Offer(&Desktop().application);
}

void SessionDesktop::Offer(IDispatch* application) {
    SharedParts().registration.Create(application);
}

void SessionDesktop::MakeInputs() {
    for (int body = 0; body < m_size.bodies; ++body) {
        m_groups.push_back({poses[body], {bodyObjects[body]}});
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

std::string SessionDesktop::Owned() {
    std::string counts;
    for (const fake::Object* const object :
         {&Desktop().application, &Desktop().desktop, &Desktop().project, &Desktop().design}) {
        counts += std::to_string(object->References());
    }
    return counts;
}

bool SessionDesktop::HoldsNothingElse() {
    const long owned = Desktop().application.References() + Desktop().desktop.References() +
                       Desktop().project.References() + Desktop().design.References();
    return Desktop().world.OutstandingReferences() == owned;
}

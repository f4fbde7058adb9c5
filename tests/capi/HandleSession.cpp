#include "tests/capi/HandleSession.h"

namespace capi {

HandleSession::HandleSession(const Size& size) : SessionDesktop(size), m_handle(std::make_unique<capi::Handle>()) {
    fake::WriteFileBytes(Folder() / L"magnets.obj", "o Magnet\n");
    MakeRecords();
}

HandleSession::~HandleSession() {
    Desktop().world.ClearFaults();
}

void HandleSession::MakeRecords() {
    for (const auto& group : m_groups) {
        m_objects.push_back({group.objects.front().c_str()});
    }
    for (std::size_t body = 0; body < m_groups.size(); ++body) {
        m_groupRecords.push_back(GroupOf(m_groups[body].transform, m_objects[body]));
    }
    for (const auto& [object, material] : m_materials) {
        m_materialRecords.push_back(MaterialOf(object.c_str(), material.name.c_str(), material.coercivityDirection));
    }
    for (const auto& poses : m_poses) {
        m_poseRecords.emplace_back();
        for (const auto& pose : poses) {
            m_poseRecords.back().push_back(PoseOf(pose));
        }
    }
    m_loads.resize(m_groups.size(), Sized<kv_load>());
}

std::vector<Call> HandleSession::Calls() {
    std::vector<Call> calls{
        {"Launch", [this] { return kv_launch(Handle(), nullptr); }},
        {"Create", [this] { return Create(); }},
        {"Init", [this] { return Init(); }},
    };
    for (int step = 0; step < m_size.steps; ++step) {
        calls.push_back({"Step", [this, step] { return Step(step); }});
    }
    calls.push_back({"Messages", [this] { return Messages(); }});
    calls.push_back({"Save", [this] { return kv_save_project(Handle()); }});
    calls.push_back({"Close", [this] { return kv_close_project(Handle()); }});
    calls.push_back({"Quit", [this] { return kv_quit(Handle()); }});
    return calls;
}

kv_status HandleSession::Create() {
    return kv_create_project(Handle(), "Magnets.vtdk", "magnets.obj", "mm");
}

kv_status HandleSession::Init() {
    return kv_init_magnetic_objects(Handle(), m_groupRecords.data(), m_groupRecords.size(), m_materialRecords.data(),
                                    m_materialRecords.size());
}

kv_status HandleSession::Step(int number) {
    WantReportsAt(number);
    const std::vector<kv_pose>& poses = Poses(number);
    return kv_analyze(Handle(), 0.1 * number, poses.data(), poses.size(), m_loads.data(), &m_loadCount,
                      &m_solverStatus);
}

kv_status HandleSession::Messages() {
    kv_texts* messages = nullptr;
    const kv_status status = kv_get_messages(Handle(), 0, &messages);
    const bool isRight = (messages != nullptr) == (status == KV_OK);
    return isRight && kv_texts_free(messages) == KV_OK ? status : KV_INTERNAL;
}

bool HandleSession::Repair() {
    if (kv_release(Handle()) != KV_OK) {
        return false;
    }
    RestartDesktop();
    return kv_launch(Handle(), nullptr) == KV_OK && Create() == KV_OK && Init() == KV_OK && Step(0) == KV_OK &&
           kv_quit(Handle()) == KV_OK;
}

} // namespace capi

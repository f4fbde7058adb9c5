// What the C interface costs over the C++ one: the same calls through both, on a desktop in the process that answers at
// once, in turns. Writes a JSON object to standard output.
// Usage: bench_capi; it works in a folder of its own in the current one

#include "bench/step/Timing.h"
#include "capi/kinora_veltrix.h"
#include "coupling/KinoraVeltrixCoupling.h"
#include "programs/Environment.h"
#include "tests/capi/InstantDesktop.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr char version[] = "Bench";
/// Of calls that take about a microsecond so many are timed in a row. Steps are timed one by one, in turns with those
/// of the other interface: the handle's thread waits meanwhile, as it does while a host calculates.
constexpr int callsInARow = 100;

void Require(bool done, const char* what) {
    if (!done) {
        throw std::runtime_error(std::string("bench of the C interface: ") + what + " failed");
    }
}

/// A folder of its own, with a file that may be a project and a geometry.
class Folder {
public:
    Folder() : m_path(std::filesystem::current_path() / "bench-capi") {
        std::filesystem::remove_all(m_path);
        std::filesystem::create_directory(m_path);
        std::ofstream(File()) << "o magnet\n";
    }
    ~Folder() {
        // What cannot be removed is left for the next run.
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    std::string Path() const { return (m_path / "").string(); }
    std::string File() const { return (m_path / "bench.obj").string(); }

private:
    std::filesystem::path m_path;
};

/// One session through the C++ interface.
class ObjectSession {
public:
    ObjectSession(const std::string& file, int bodies) {
        Require(m_coupling.OpenProject(file, "Design"), "OpenProject");
        for (int body = 0; body < bodies; ++body) {
            m_transforms.emplace_back();
            m_transforms.back().name = "B" + std::to_string(body);
        }
    }
    ~ObjectSession() { m_coupling.ReleaseApplication(); }
    ObjectSession(const ObjectSession&) = delete;
    ObjectSession& operator=(const ObjectSession&) = delete;

    void Save() { Require(m_coupling.SaveProject(), "SaveProject"); }
    void Messages() {
        std::vector<std::string> messages;
        Require(m_coupling.GetMessages(messages, IKinoraVeltrixInterface::MessageSeverity::Info), "GetMessages");
    }
    void Step() {
        std::vector<IKinoraVeltrixInterface::Result> results;
        int status = 0;
        Require(m_coupling.Analyze(0.0, m_transforms, results, status), "Analyze");
    }

private:
    CKinoraVeltrixCoupling m_coupling;
    std::vector<IKinoraVeltrixInterface::Transform> m_transforms;
};

/// The same through the C interface.
class HandleSession {
public:
    HandleSession(const std::string& file, int bodies) {
        Require(kv_new(KV_API_VERSION, nullptr, &m_handle) == KV_OK, "kv_new");
        Require(kv_open_project(m_handle, file.c_str(), "Design") == KV_OK, "kv_open_project");
        for (int body = 0; body < bodies; ++body) {
            m_names.push_back("B" + std::to_string(body));
        }
        for (const std::string& name : m_names) {
            m_poses.push_back({sizeof(kv_pose), name.c_str(), {}, {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0}});
            m_loads.push_back({sizeof(kv_load), {}, {}});
        }
    }
    ~HandleSession() { kv_delete(m_handle); }
    HandleSession(const HandleSession&) = delete;
    HandleSession& operator=(const HandleSession&) = delete;

    void Save() { Require(kv_save_project(m_handle) == KV_OK, "kv_save_project"); }
    void Messages() {
        kv_texts* messages = nullptr;
        Require(kv_get_messages(m_handle, 0, &messages) == KV_OK, "kv_get_messages");
        kv_texts_free(messages);
    }
    void Step() {
        std::size_t count = 0;
        std::int32_t status = 0;
        Require(kv_analyze(m_handle, 0.0, m_poses.data(), m_poses.size(), m_loads.data(), &count, &status) == KV_OK,
                "kv_analyze");
    }

private:
    kv_coupling* m_handle = nullptr;
    std::vector<std::string> m_names;
    std::vector<kv_pose> m_poses;
    std::vector<kv_load> m_loads;
};

template <class Session>
std::function<void()> InARow(Session& session, void (Session::*call)()) {
    return [&session, call] {
        for (int i = 0; i < callsInARow; ++i) {
            (session.*call)();
        }
    };
}

nlohmann::json Row(const char* call, int bodies, int calls, const std::function<void()>& object,
                   const std::function<void()>& handle) {
    const std::vector<double> seconds = Medians({object, handle});
    return {{"call", call},
            {"bodies", bodies},
            {"microseconds", 1e6 * seconds[0] / calls},
            {"microsecondsMore", 1e6 * (seconds[1] - seconds[0]) / calls},
            {"ratio", seconds[1] / seconds[0]}};
}

} // namespace

int main() try {
    const Folder folder;
    const capi::InstantDesktop desktop(version, folder.Path(), false);
    kinora::programs::SetEnvironmentValue("KINORA_VELTRIX_VTDK_VERSION", version);
    nlohmann::json rows = nlohmann::json::array();
    for (const int bodies : {2, 20}) {
        ObjectSession object(folder.File(), bodies);
        HandleSession handle(folder.File(), bodies);
        if (rows.empty()) {
            rows.push_back(Row("kv_save_project", 0, callsInARow, InARow(object, &ObjectSession::Save),
                               InARow(handle, &HandleSession::Save)));
            rows.push_back(Row("kv_get_messages", 0, callsInARow, InARow(object, &ObjectSession::Messages),
                               InARow(handle, &HandleSession::Messages)));
        }
        rows.push_back(Row(
            "kv_analyze", bodies, 1, [&] { object.Step(); }, [&] { handle.Step(); }));
    }
    std::cout << rows.dump(2) << std::endl;
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "error: %s\n", error.what());
    return 1;
}

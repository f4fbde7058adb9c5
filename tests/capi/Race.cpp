// Many threads do anything with a few handles at once, on desktops that answer at once and now and then refuse. Every
// status has to be one that the call may have, every text and list whole, and nothing may be left at the end. For the
// thread sanitizer (scripts/race), which sees what else goes wrong.
// Usage: capi_race SECONDS [SEED]

#include "capi/kinora_veltrix.h"
#include "tests/capi/InstantDesktop.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int threadCount = 32;
constexpr std::size_t handleCount = 8;
constexpr const char* version = "Race";
constexpr const char* versionVariable = "KINORA_VELTRIX_VTDK_VERSION";

std::array<std::atomic<kv_coupling*>, handleCount> handles{};
std::atomic<bool> isOver{false};
std::atomic<int> complaints{0};

void Complain(const char* operation, const std::string& what) {
    if (++complaints <= 20) { // to read
        std::fprintf(stderr, "%s: %s\n", operation, what.c_str());
    }
}

/// What one thread did.
struct Tally {
    std::array<unsigned long, KV_INTERNAL + 1> statuses{};
};

/// A folder with a file that may be a project and a geometry, for as long as it lives.
class Folder {
public:
    Folder()
        : m_path(std::filesystem::temp_directory_path() / ("kinora-race-" + std::to_string(std::random_device()()))) {
        std::filesystem::create_directory(m_path);
        std::ofstream(File()) << "o magnet\n";
    }
    ~Folder() {
        std::error_code ignored; // a folder that stays is no failure
        std::filesystem::remove_all(m_path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    std::string Path() const { return m_path.string() + "/"; }
    std::string File() const { return (m_path / "race.obj").string(); }

private:
    std::filesystem::path m_path;
};

/// One of the threads: it picks a handle and an operation, again and again.
class Racer {
public:
    Racer(unsigned seed, const std::string& file) : m_random(seed), m_file(file.c_str()) {
        const double identity[9] = {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0};
        for (std::size_t body = 0; body < 2; ++body) {
            m_groups[body] = {sizeof(kv_group), names[body], {}, {}, &objects[body], 1};
            m_poses[body] = {sizeof(kv_pose), names[body], {}, {}};
            std::copy(std::begin(identity), std::end(identity), m_groups[body].rotation);
            std::copy(std::begin(identity), std::end(identity), m_poses[body].rotation);
            m_materials[body] = {sizeof(kv_material), objects[body], "iron", {}};
        }
    }

    void Run() {
        while (!isOver) {
            const auto operation = static_cast<std::size_t>(m_random() % std::size(operations));
            kv_coupling* const handle = handles[m_random() % handleCount];
            Check(operations[operation].name, (this->*operations[operation].run)(handle));
        }
    }

    const Tally& Result() const { return m_tally; }

private:
    struct Operation {
        const char* name;
        kv_status (Racer::*run)(kv_coupling* handle);
    };
    static const Operation operations[19];
    static constexpr const char* names[2] = {"Rotor", "Stator"};
    static constexpr const char* objects[2] = {"magnet", "block"};

    void Check(const char* operation, kv_status status) {
        // A desktop of C++ that throws is an internal error, or a step without all loads.
        if (status < KV_OK || status > KV_INTERNAL || status == KV_NO_MEMORY || status == KV_BAD_TEXT) {
            return Complain(operation, "the status " + std::to_string(status));
        }
        ++m_tally.statuses[static_cast<std::size_t>(status)];
    }

    /// A new handle in place of one, which is deleted, twice now and then.
    kv_status Renew(kv_coupling*) {
        kv_coupling* made = nullptr;
        const kv_status status = kv_new(KV_API_VERSION, nullptr, &made);
        kv_coupling* const old = handles[m_random() % handleCount].exchange(made);
        if (kv_delete(old) != KV_OK) {
            Complain("kv_delete", "a handle that nobody else deletes was none");
        }
        return m_random() % 2 == 0 && old != nullptr ? kv_delete(old) : status;
    }
    kv_status Launch(kv_coupling* handle) { return kv_launch(handle, version); }
    kv_status LaunchNone(kv_coupling* handle) { return kv_launch(handle, "Nowhere"); }
    kv_status Create(kv_coupling* handle) { return kv_create_project(handle, m_file, m_file, "mm"); }
    kv_status Open(kv_coupling* handle) { return kv_open_project(handle, m_file, "Design"); }
    kv_status OpenNone(kv_coupling* handle) { return kv_open_project(handle, "/nowhere/a.vtdk", nullptr); }
    kv_status Geometry(kv_coupling* handle) { return kv_init_geometry(handle, m_file, "mm"); }
    kv_status Init(kv_coupling* handle) { return kv_init_magnetic_objects(handle, m_groups, 2, m_materials, 2); }
    kv_status Analyze(kv_coupling* handle) {
        kv_load loads[2] = {};
        loads[0].size = loads[1].size = sizeof(kv_load);
        std::size_t count = 0;
        std::int32_t solver = 0;
        const kv_status status =
            kv_analyze(handle, m_random() % 2 == 0 ? 0.0 : 1.0, m_poses, 2, loads, &count, &solver);
        const bool isWhole = count == 2 && loads[1].force[2] == capi::instantLoad && solver == 0;
        if (status == KV_OK && !isWhole) {
            Complain("kv_analyze", "other loads than the desktop's");
        }
        return status;
    }
    kv_status Designs(kv_coupling* handle) {
        kv_texts* list = nullptr;
        const kv_status status = kv_get_designs(handle, m_file, &list);
        ReadAndFree(list, 0, status);
        return status;
    }
    kv_status Messages(kv_coupling* handle) {
        kv_texts* list = nullptr;
        const kv_status status = kv_get_messages(handle, 0, &list);
        ReadAndFree(list, 2, status);
        return status;
    }
    kv_status Save(kv_coupling* handle) { return kv_save_project(handle); }
    kv_status Close(kv_coupling* handle) { return kv_close_project(handle); }
    kv_status Quit(kv_coupling* handle) { return kv_quit(handle); }
    kv_status Release(kv_coupling* handle) { return kv_release(handle); }
    kv_status Error(kv_coupling* handle) { return Told(handle); }
    kv_status ThreadsError(kv_coupling*) { return Told(nullptr); }
    kv_status Codes(kv_coupling*) {
        const char* text = nullptr;
        return kv_code_text(static_cast<kv_status>(m_random() % 14), &text);
    }
    kv_status Version(kv_coupling*) {
        std::int32_t api = 0;
        const char* text = nullptr;
        return kv_version(&api, &text);
    }

    kv_status Told(kv_coupling* handle) {
        const char* text = nullptr;
        const kv_status status = kv_error_text(handle, &text);
        if (status == KV_OK && *text != '\0' && std::strncmp(text, "kv_", 3) != 0) {
            Complain("kv_error_text", text);
        }
        return status;
    }

    void ReadAndFree(kv_texts* list, std::size_t expected, kv_status status) {
        if (!list == (status == KV_OK)) {
            return Complain("a list", "is there after a failure, or missing");
        }
        std::size_t count = 0;
        const char* first = nullptr;
        if (list && (kv_texts_count(list, &count) != KV_OK || count != expected)) {
            Complain("a list", "has " + std::to_string(count) + " texts");
        }
        if (count > 0 && (kv_texts_at(list, 0, &first) != KV_OK || std::strcmp(first, "a message") != 0)) {
            Complain("a list", "has another text");
        }
        kv_texts_free(list);
    }

    std::mt19937 m_random;
    const char* m_file;
    kv_group m_groups[2];
    kv_material m_materials[2];
    kv_pose m_poses[2];
    Tally m_tally;
};

const Racer::Operation Racer::operations[19] = {
    {"kv_new, kv_delete", &Racer::Renew},    {"kv_launch", &Racer::Launch},
    {"kv_launch", &Racer::LaunchNone},       {"kv_create_project", &Racer::Create},
    {"kv_open_project", &Racer::Open},       {"kv_open_project", &Racer::OpenNone},
    {"kv_init_geometry", &Racer::Geometry},  {"kv_init_magnetic_objects", &Racer::Init},
    {"kv_analyze", &Racer::Analyze},         {"kv_get_designs", &Racer::Designs},
    {"kv_get_messages", &Racer::Messages},   {"kv_save_project", &Racer::Save},
    {"kv_close_project", &Racer::Close},     {"kv_quit", &Racer::Quit},
    {"kv_release", &Racer::Release},         {"kv_error_text", &Racer::Error},
    {"kv_error_text", &Racer::ThreadsError}, {"kv_code_text", &Racer::Codes},
    {"kv_version", &Racer::Version},
};

/// @return what all threads together did
Tally RunAll(double seconds, unsigned seed, const std::string& file) {
    std::vector<Racer> racers;
    for (unsigned thread = 0; thread < threadCount; ++thread) {
        racers.emplace_back(seed + thread, file);
    }
    std::vector<std::thread> threads;
    for (Racer& racer : racers) {
        threads.emplace_back([&racer] { racer.Run(); });
    }
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    isOver = true;
    Tally all;
    for (std::size_t thread = 0; thread < threads.size(); ++thread) {
        threads[thread].join();
        for (std::size_t status = 0; status < all.statuses.size(); ++status) {
            all.statuses[status] += racers[thread].Result().statuses[status];
        }
    }
    return all;
}

bool Race(double seconds, unsigned seed) {
    const Folder folder;
    const capi::InstantDesktop desktop(version, folder.Path(), true);
    setenv(versionVariable, version, 1); // before there are threads
    const Tally all = RunAll(seconds, seed, folder.File());
    for (auto& handle : handles) {
        kv_delete(handle.exchange(nullptr));
    }
    unsigned long calls = 0;
    std::printf("C interface, race: %d threads, %zu handles, %g s, seed %u\n", threadCount, handleCount, seconds, seed);
    for (std::size_t status = 0; status < all.statuses.size(); ++status) {
        const char* text = "";
        kv_code_text(static_cast<kv_status>(status), &text);
        if (all.statuses[status] > 0) {
            std::printf("  %9lu  %s\n", all.statuses[status], text);
        }
        calls += all.statuses[status];
    }
    std::printf("  %9lu  calls, %d complaints, %ld applications left\n", calls, complaints.load(),
                capi::InstantDesktop::Live());
    return complaints == 0 && capi::InstantDesktop::Live() == 0 && all.statuses[KV_OK] > 0;
}

} // namespace

int main(int count, char** arguments) try {
    const double seconds = count > 1 ? std::atof(arguments[1]) : 0.0;
    if (count > 3 || !(seconds > 0.0)) {
        std::fprintf(stderr, "usage: capi_race SECONDS [SEED]\n");
        return 2;
    }
    const unsigned seed =
        count > 2 ? static_cast<unsigned>(std::strtoul(arguments[2], nullptr, 10)) : std::random_device()();
    return Race(seconds, seed) ? 0 : 1;
} catch (const std::exception& error) {
    std::fprintf(stderr, "error: %s\n", error.what());
    return 1;
}

#include "bench/step/Session.h"

#include "bench/desktop/BenchDesktop.h"

#include <windows.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace {

using Rows = std::vector<std::vector<std::string>>;

/// The history is private. An explicit instantiation may name it, and a long history cannot be had otherwise in the
/// time of a benchmark: recording 10,000 steps sends half of 10,000 times 10,000 rows.
Rows& HistoryOf(CKinoraVeltrixCoupling& coupling);
template <Rows CKinoraVeltrixCoupling::*Member>
struct Reach {
    friend Rows& HistoryOf(CKinoraVeltrixCoupling& coupling) { return coupling.*Member; }
};
template struct Reach<&CKinoraVeltrixCoupling::m_stepRows>;

void Require(bool done, const char* what) {
    if (!done) {
        throw std::runtime_error(std::string("bench session: ") + what + " failed");
    }
}

std::string LastLine(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::string line, last;
    while (std::getline(file, line)) {
        last = line;
    }
    return last + "\n";
}

} // namespace

Session::Session(int bodies, std::size_t recordedSteps, const std::string& reports)
    : m_folder(std::filesystem::current_path() / "bench-project") {
    std::filesystem::remove_all(m_folder);
    std::filesystem::create_directory(m_folder);
    const std::filesystem::path project = m_folder / "Bench.project";
    std::ofstream(project) << "bench";
    BenchConfigure((m_folder.wstring() + L"\\").c_str(), bodies, std::wstring(reports.begin(), reports.end()).c_str());
    Require(_putenv("KINORA_VELTRIX_VTDK_VERSION=Bench") == 0, "setting the desktop version");
    Require(m_coupling.OpenProject(project.string(), "Design"), "OpenProject");
    for (int body = 0; body < bodies; ++body) {
        IKinoraVeltrixInterface::Transform transform;
        transform.name = "B" + std::to_string(body);
        transform.translation[0] = 0.0123456 * (body + 1);
        m_transforms.push_back(transform);
    }
    int status = 0;
    Require(m_coupling.Analyze(0.0, m_transforms, m_results, status), "the first step");
    Rows& history = HistoryOf(m_coupling);
    history.resize(recordedSteps, history.front());
    Step();
    CollectFiles();
}

Session::~Session() {
    m_coupling.ReleaseApplication();
    // A folder that cannot be removed is overwritten by the next session.
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
}

void Session::Step() {
    m_results.clear();
    int status = 0;
    Require(m_coupling.Analyze(0.01, m_transforms, m_results, status), "a step");
    HistoryOf(m_coupling).pop_back();
}

void Session::WriteHistory() {
    Require(m_coupling.AddParametricSetup(false), "writing the history");
}

void Session::CollectFiles() {
    for (const auto& entry : std::filesystem::directory_iterator(m_folder / "Bench.reports")) {
        m_files.push_back({entry.path(), LastLine(entry.path())});
    }
}

void Session::AppendToFiles() const {
    for (const File& file : m_files) {
        const HANDLE handle = CreateFileW(file.path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                          nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        DWORD written = 0;
        const BOOL done = WriteFile(handle, file.line.data(), static_cast<DWORD>(file.line.size()), &written, nullptr);
        CloseHandle(handle);
        Require(done != FALSE, "appending to a file");
    }
}

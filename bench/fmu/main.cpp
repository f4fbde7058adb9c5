// What an FMU costs over the C interface: steps through both, the poses set and the loads fetched, on a desktop in the
// process that answers at once, in turns. Writes a JSON array to standard output.
// Usage: bench_fmu; it works in a folder of its own in the current one

#include "bench/step/Timing.h"
#include "capi/kinora_veltrix.h"
#include "fmu/core/Model.h"
#include "fmu/fmi/Fmi2.h"
#include "scenario/ScenarioReader.h"
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

using namespace kinora;

constexpr const char* desktopVersion = "Bench";
constexpr double stepSeconds = 0.001;

void Require(bool done, const char* what) {
    if (!done) {
        throw std::runtime_error(std::string("bench of the FMU: ") + what + " failed");
    }
}

std::string Name(int body) {
    return "B" + std::to_string(body);
}

/// A folder of its own, with resources as an FMU has them.
class Folder {
public:
    explicit Folder(int bodies) : m_path(std::filesystem::current_path() / "bench-fmu") {
        std::filesystem::remove_all(m_path);
        std::filesystem::create_directory(m_path);
        fmu::Packing packing;
        packing.ports = fmu::Ports::Poses;
        packing.modelIdentifier = packing.token = "bench";
        std::ofstream(m_path / fmu::packingFile) << ToJson(packing);
        nlohmann::json scenario = {{"project", {{"file", "bench.vantor"}}},
                                   {"geometry", {{"file", "bench.obj"}, {"units", "mm"}}},
                                   {"solver", {{"step", stepSeconds}, {"end", 1}}}};
        std::ofstream geometry(m_path / "bench.obj");
        geometry << "v 0 0 0\nv 1 0 0\nv 0 1 0\n";
        for (int body = 0; body < bodies; ++body) {
            scenario["bodies"].push_back({{"name", Name(body)}, {"objects", {"o" + Name(body)}}});
            geometry << "o o" << Name(body) << "\nf 1 2 3\n";
        }
        std::ofstream(m_path / fmu::packedScenarioFile) << scenario;
    }
    ~Folder() {
        // What cannot be removed is left for the next run.
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

/// Through the C interface.
class HandleSession {
public:
    HandleSession(const Folder& folder, int bodies) {
        Require(kv_new(KV_API_VERSION, nullptr, &m_handle) == KV_OK, "kv_new");
        Require(kv_launch(m_handle, desktopVersion) == KV_OK, "kv_launch");
        const std::string project = (folder.Path() / "handle.vantor").string();
        Require(kv_create_project(m_handle, project.c_str(), (folder.Path() / "bench.obj").string().c_str(), "mm") ==
                    KV_OK,
                "kv_create_project");
        for (int body = 0; body < bodies; ++body) {
            m_names.push_back(Name(body));
        }
        std::vector<kv_group> groups;
        for (const std::string& name : m_names) {
            groups.push_back({sizeof(kv_group), name.c_str(), {}, {1, 0, 0, 0, 1, 0, 0, 0, 1}, nullptr, 0});
            m_poses.push_back({sizeof(kv_pose), name.c_str(), {}, {1, 0, 0, 0, 1, 0, 0, 0, 1}});
            m_loads.push_back({sizeof(kv_load), {}, {}});
        }
        Require(kv_init_magnetic_objects(m_handle, groups.data(), groups.size(), nullptr, 0) == KV_OK,
                "kv_init_magnetic_objects");
    }
    ~HandleSession() { kv_delete(m_handle); }
    HandleSession(const HandleSession&) = delete;
    HandleSession& operator=(const HandleSession&) = delete;

    void Step() {
        std::size_t count = 0;
        std::int32_t status = 0;
        // As the FMU's the history of the run grows.
        m_time += stepSeconds;
        Require(kv_analyze(m_handle, m_time, m_poses.data(), m_poses.size(), m_loads.data(), &count, &status) == KV_OK,
                "kv_analyze");
    }

private:
    kv_coupling* m_handle = nullptr;
    double m_time = -stepSeconds;
    std::vector<std::string> m_names;
    std::vector<kv_pose> m_poses;
    std::vector<kv_load> m_loads;
};

void Print(fmi2ComponentEnvironment /*environment*/, fmi2String /*name*/, fmi2Status /*status*/,
           fmi2String /*category*/, fmi2String /*message*/, ...) {
    std::fputs("the FMU has told something\n", stderr);
}

/// Through the functions of FMI 2.0.
class FmuSession {
public:
    FmuSession(const Folder& folder, const fmu::Model& model) {
        static const fmi2CallbackFunctions callbacks = {Print, nullptr, nullptr, nullptr, nullptr};
        m_instance = fmi2Instantiate("bench", fmi2CoSimulation, "bench", ("file://" + folder.Path().string()).c_str(),
                                     &callbacks, fmi2False, fmi2False);
        Require(m_instance, "fmi2Instantiate");
        const std::string runs = folder.Path().string();
        const fmi2ValueReference references[] = {fmu::outputFolderReference, fmu::desktopVersionReference};
        const fmi2String texts[] = {runs.c_str(), desktopVersion};
        Require(fmi2SetString(m_instance, references, 2, texts) == fmi2OK, "fmi2SetString");
        Require(fmi2SetupExperiment(m_instance, fmi2False, 0.0, 0.0, fmi2False, 0.0) == fmi2OK, "fmi2SetupExperiment");
        Require(fmi2EnterInitializationMode(m_instance) == fmi2OK, "fmi2EnterInitializationMode");
        Require(fmi2ExitInitializationMode(m_instance) == fmi2OK, "fmi2ExitInitializationMode");
        for (const fmu::Variable& variable : model.Variables()) {
            const bool isInput = variable.causality == fmu::Causality::Input;
            if (variable.port && (isInput || variable.causality == fmu::Causality::Output)) {
                for (std::size_t i = 0; i < variable.start.size(); ++i) {
                    const auto reference = variable.reference + static_cast<fmu::Reference>(i);
                    (isInput ? m_inputs : m_outputs).push_back(reference);
                    if (isInput) {
                        m_values.push_back(variable.start[i]);
                    }
                }
            }
        }
        m_loads.resize(m_outputs.size());
    }
    ~FmuSession() { fmi2FreeInstance(m_instance); }
    FmuSession(const FmuSession&) = delete;
    FmuSession& operator=(const FmuSession&) = delete;

    void Step() {
        Require(fmi2SetReal(m_instance, m_inputs.data(), m_inputs.size(), m_values.data()) == fmi2OK, "fmi2SetReal");
        Require(fmi2DoStep(m_instance, m_time, stepSeconds, fmi2True) == fmi2OK, "fmi2DoStep");
        Require(fmi2GetReal(m_instance, m_outputs.data(), m_outputs.size(), m_loads.data()) == fmi2OK, "fmi2GetReal");
        m_time += stepSeconds;
    }

private:
    fmi2Component m_instance = nullptr;
    std::vector<fmi2ValueReference> m_inputs, m_outputs;
    std::vector<double> m_values, m_loads;
    double m_time = 0.0;
};

nlohmann::json Row(int bodies) {
    const Folder folder(bodies);
    const capi::InstantDesktop desktop(desktopVersion, (folder.Path() / "").string(), false);
    const scenario::Scenario scenario = scenario::ReadScenario(folder.Path() / fmu::packedScenarioFile);
    fmu::Packing packing;
    packing.ports = fmu::Ports::Poses;
    const fmu::Model model(scenario, packing);
    HandleSession handle(folder, bodies);
    FmuSession instance(folder, model);
    const std::vector<double> seconds = Medians({[&] { handle.Step(); }, [&] { instance.Step(); }});
    return {{"bodies", bodies},
            {"microseconds", 1e6 * seconds[0]},
            {"microsecondsMore", 1e6 * (seconds[1] - seconds[0])},
            {"ratio", seconds[1] / seconds[0]}};
}

} // namespace

int main() try {
    nlohmann::json rows = nlohmann::json::array();
    for (const int bodies : {2, 20}) {
        rows.push_back(Row(bodies));
    }
    std::cout << rows.dump(2) << std::endl;
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "error: %s\n", error.what());
    return 1;
}

#include "tests/fmu/Importer.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <fstream>
#include <pugixml.hpp>
#include <stdexcept>
#include <unzip.h>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace importer {
namespace {

void Require(bool isRight, const std::string& what) {
    if (!isRight) {
        throw std::runtime_error(what);
    }
}

/// An archive's files, one after the other.
class Archive {
public:
    explicit Archive(const std::filesystem::path& file) : m_zip(unzOpen64(file.string().c_str())) {
        Require(m_zip, file.string() + " is no archive");
    }
    ~Archive() { unzClose(m_zip); }
    Archive(const Archive&) = delete;
    Archive& operator=(const Archive&) = delete;

    void UnpackAll(const std::filesystem::path& folder) {
        for (int more = unzGoToFirstFile(m_zip); more == UNZ_OK; more = unzGoToNextFile(m_zip)) {
            unz_file_info64 info = {};
            std::string name(512, '\0');
            unzGetCurrentFileInfo64(m_zip, &info, name.data(), static_cast<uLong>(name.size()), nullptr, 0, nullptr, 0);
            name.resize(info.size_filename);
            const std::filesystem::path file = folder / std::filesystem::u8path(name);
            std::filesystem::create_directories(file.parent_path());
            std::string bytes(static_cast<std::size_t>(info.uncompressed_size), '\0');
            unzOpenCurrentFile(m_zip);
            Require(unzReadCurrentFile(m_zip, bytes.data(), static_cast<unsigned>(bytes.size())) ==
                        static_cast<int>(bytes.size()),
                    name + " cannot be unpacked");
            Require(unzCloseCurrentFile(m_zip) == UNZ_OK, name + " is damaged");
            std::ofstream(file, std::ios::binary) << bytes;
        }
    }

private:
    unzFile m_zip;
};

std::filesystem::path BinaryOf(int version, const std::string& identifier) {
#ifdef _WIN32
    return std::filesystem::path("binaries") / (version == 2 ? "win64" : "x86_64-windows") / (identifier + ".dll");
#else
    return std::filesystem::path("binaries") / (version == 2 ? "linux64" : "x86_64-linux") / (identifier + ".so");
#endif
}

/// Elements of a vector in FMI 2.0.
std::vector<std::uint32_t> References(const Fmu& fmu, const std::string& name, std::size_t size) {
    if (fmu.Version() == 3 || size == 1) {
        return {fmu.Reference(name)};
    }
    std::vector<std::uint32_t> references;
    for (std::size_t i = 1; i <= size; ++i) {
        references.push_back(fmu.Reference(name + "[" + std::to_string(i) + "]"));
    }
    return references;
}

extern "C" void Log2(fmi2ComponentEnvironment environment, fmi2String /*name*/, fmi2Status status, fmi2String category,
                     fmi2String message, ...) {
    va_list arguments;
    va_start(arguments, message);
    char text[8192];
    std::vsnprintf(text, sizeof text, message, arguments);
    va_end(arguments);
    static_cast<Instance*>(environment)->Tell(status, category, text);
}

extern "C" void Log3(fmi3InstanceEnvironment environment, fmi3Status status, fmi3String category, fmi3String message) {
    static_cast<Instance*>(environment)->Tell(status, category, message);
}

class Instance2 : public Instance {
public:
    Instance2(const Fmu& fmu, const std::string& name, const std::filesystem::path& output) : m_fmu(fmu) {
        m_callbacks = {Log2, nullptr, nullptr, nullptr, this};
        m_component = Call<decltype(fmi2Instantiate)>("fmi2Instantiate")(
            name.c_str(), fmi2CoSimulation, fmu.Token().c_str(), fmu.ResourceLocation().c_str(), &m_callbacks,
            fmi2False, fmi2True);
        if (m_component && !output.empty()) {
            Instance2::SetText("outputFolder", output.u8string());
        }
    }
    ~Instance2() override { Instance2::Free(); }

    bool Exists() const override { return m_component != nullptr; }
    int EnterInitialization(double startTime, double stopTime) override {
        const int status = Call<decltype(fmi2SetupExperiment)>("fmi2SetupExperiment")(m_component, fmi2False, 0.0,
                                                                                      startTime, fmi2True, stopTime);
        return status != fmi2OK ? status : Call<decltype(fmi2Reset)>("fmi2EnterInitializationMode")(m_component);
    }
    int ExitInitialization() override { return Call<decltype(fmi2Reset)>("fmi2ExitInitializationMode")(m_component); }
    int DoStep(double time, double duration) override {
        return Call<decltype(fmi2DoStep)>("fmi2DoStep")(m_component, time, duration, fmi2True);
    }
    int Terminate() override { return Call<decltype(fmi2Reset)>("fmi2Terminate")(m_component); }
    int Reset() override { return Call<decltype(fmi2Reset)>("fmi2Reset")(m_component); }
    void Free() override {
        Call<decltype(fmi2FreeInstance)>("fmi2FreeInstance")(m_component);
        m_component = nullptr;
    }
    int SetNumbers(const std::string& name, const std::vector<double>& values) override {
        const auto references = References(m_fmu, name, values.size());
        return Call<decltype(fmi2SetReal)>("fmi2SetReal")(m_component, references.data(), references.size(),
                                                          values.data());
    }
    int GetNumbers(const std::string& name, std::vector<double>& values) override {
        const auto references = References(m_fmu, name, values.size());
        return Call<decltype(fmi2GetReal)>("fmi2GetReal")(m_component, references.data(), references.size(),
                                                          values.data());
    }
    int GetInteger(const std::string& name, int& value) override {
        const fmi2ValueReference reference = m_fmu.Reference(name);
        return Call<decltype(fmi2GetInteger)>("fmi2GetInteger")(m_component, &reference, 1, &value);
    }
    int SetText(const std::string& name, const std::string& text) override {
        const fmi2ValueReference reference = m_fmu.Reference(name);
        const char* texts[] = {text.c_str()};
        return Call<decltype(fmi2SetString)>("fmi2SetString")(m_component, &reference, 1, texts);
    }

    int SetDerivatives(const std::string& name, const std::vector<std::pair<int, double>>& derivatives) override {
        int worst = 0;
        for (const auto& [order, value] : derivatives) {
            const fmi2ValueReference reference = m_fmu.Reference(name);
            worst = std::max<int>(worst, Call<decltype(fmi2SetRealInputDerivatives)>("fmi2SetRealInputDerivatives")(
                                             m_component, &reference, 1, &order, &value));
        }
        return worst;
    }

private:
    template <class Function>
    Function* Call(const char* name) const {
        return m_fmu.Binary().Find<Function>(name);
    }

    const Fmu& m_fmu;
    fmi2CallbackFunctions m_callbacks = {};
    fmi2Component m_component = nullptr;
};

class Instance3 : public Instance {
public:
    Instance3(const Fmu& fmu, const std::string& name, const std::filesystem::path& output) : m_fmu(fmu) {
        m_instance = Call<decltype(fmi3InstantiateCoSimulation)>("fmi3InstantiateCoSimulation")(
            name.c_str(), fmu.Token().c_str(), fmu.ResourcePath().c_str(), false, true, false, false, nullptr, 0, this,
            Log3, nullptr);
        if (m_instance && !output.empty()) {
            Instance3::SetText("outputFolder", output.u8string());
        }
    }
    ~Instance3() override { Instance3::Free(); }

    bool Exists() const override { return m_instance != nullptr; }
    int EnterInitialization(double startTime, double stopTime) override {
        return Call<decltype(fmi3EnterInitializationMode)>("fmi3EnterInitializationMode")(m_instance, false, 0.0,
                                                                                          startTime, true, stopTime);
    }
    int ExitInitialization() override { return Call<decltype(fmi3Reset)>("fmi3ExitInitializationMode")(m_instance); }
    int DoStep(double time, double duration) override {
        fmi3Boolean needsEvent = true, terminates = true, isEarly = true;
        fmi3Float64 last = -1.0;
        const int status = Call<decltype(fmi3DoStep)>("fmi3DoStep")(m_instance, time, duration, true, &needsEvent,
                                                                    &terminates, &isEarly, &last);
        const bool isRight = !needsEvent && !terminates && !isEarly && last == time + duration;
        Require(status != fmi3OK || isRight, "a step that went well says that it did not");
        return status;
    }
    int Terminate() override { return Call<decltype(fmi3Reset)>("fmi3Terminate")(m_instance); }
    int Reset() override { return Call<decltype(fmi3Reset)>("fmi3Reset")(m_instance); }
    void Free() override {
        Call<decltype(fmi3FreeInstance)>("fmi3FreeInstance")(m_instance);
        m_instance = nullptr;
    }
    int SetNumbers(const std::string& name, const std::vector<double>& values) override {
        const fmi3ValueReference reference = m_fmu.Reference(name);
        return Call<decltype(fmi3SetFloat64)>("fmi3SetFloat64")(m_instance, &reference, 1, values.data(),
                                                                values.size());
    }
    int GetNumbers(const std::string& name, std::vector<double>& values) override {
        const fmi3ValueReference reference = m_fmu.Reference(name);
        return Call<decltype(fmi3GetFloat64)>("fmi3GetFloat64")(m_instance, &reference, 1, values.data(),
                                                                values.size());
    }
    int GetInteger(const std::string& name, int& value) override {
        const fmi3ValueReference reference = m_fmu.Reference(name);
        return Call<decltype(fmi3GetInt32)>("fmi3GetInt32")(m_instance, &reference, 1, &value, 1);
    }
    int SetText(const std::string& name, const std::string& text) override {
        const fmi3ValueReference reference = m_fmu.Reference(name);
        const char* texts[] = {text.c_str()};
        return Call<decltype(fmi3SetString)>("fmi3SetString")(m_instance, &reference, 1, texts, 1);
    }

private:
    template <class Function>
    Function* Call(const char* name) const {
        return m_fmu.Binary().Find<Function>(name);
    }

    const Fmu& m_fmu;
    fmi3Instance m_instance = nullptr;
};

} // namespace

#ifdef _WIN32
Library::Library(const std::filesystem::path& file)
    : m_handle(LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH)) {
    Require(m_handle, file.string() + " cannot be loaded: " + std::to_string(GetLastError()));
}

Library::~Library() {
    FreeLibrary(static_cast<HMODULE>(m_handle));
}

void* Library::Address(const char* name) const {
    void* address = reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(m_handle), name));
    Require(address, std::string("there is no ") + name);
    return address;
}
#else
Library::Library(const std::filesystem::path& file) : m_handle(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    Require(m_handle, file.string() + " cannot be loaded");
}

Library::~Library() {
    dlclose(m_handle);
}

void* Library::Address(const char* name) const {
    void* address = dlsym(m_handle, name);
    Require(address, std::string("there is no ") + name);
    return address;
}
#endif

Fmu::Fmu(const std::filesystem::path& archive, const std::filesystem::path& folder) : m_folder(folder) {
    Archive(archive).UnpackAll(folder);
    ReadDescription();
    m_binary = std::make_unique<Library>(folder / BinaryOf(m_version, m_identifier));
}

void Fmu::ReadDescription() {
    pugi::xml_document document;
    Require(document.load_file((m_folder / "modelDescription.xml").c_str()), "the description cannot be read");
    const pugi::xml_node root = document.child("fmiModelDescription");
    m_version = root.attribute("fmiVersion").value()[0] - '0';
    m_token = root.attribute(m_version == 2 ? "guid" : "instantiationToken").value();
    m_identifier = root.child("CoSimulation").attribute("modelIdentifier").value();
    for (const pugi::xml_node variable : root.child("ModelVariables").children()) {
        m_references[variable.attribute("name").value()] = variable.attribute("valueReference").as_uint();
    }
}

std::string Fmu::ResourcePath() const {
    return (m_folder / "resources" / "").u8string();
}

std::string Fmu::ResourceLocation() const {
    std::string location;
    for (const char letter : (m_folder / "resources").generic_u8string()) {
        location += letter == ' ' ? "%20" : std::string(1, letter);
    }
    return std::string("file://") + (location[0] == '/' ? "" : "/") + location;
}

std::unique_ptr<Instance> Instance::Of(const Fmu& fmu, const std::string& name, const std::filesystem::path& output) {
    if (fmu.Version() == 2) {
        return std::make_unique<Instance2>(fmu, name, output);
    }
    return std::make_unique<Instance3>(fmu, name, output);
}

int Instance::SetDerivatives(const std::string& /*name*/, const std::vector<std::pair<int, double>>& /*derivatives*/) {
    throw std::runtime_error("FMI 3.0 has no derivatives of inputs");
}

double Instance::Number(const std::string& name) {
    return Vector(name, 1).front();
}

std::vector<double> Instance::Vector(const std::string& name, std::size_t size) {
    std::vector<double> values(size);
    const bool isGiven = GetNumbers(name, values) == 0;
    Require(isGiven, name + " is not given: " + LogText());
    return values;
}

void Instance::Start(double startTime, double stopTime) {
    Require(Exists(), "no instance: " + LogText());
    const bool isStarted = EnterInitialization(startTime, stopTime) == 0 && ExitInitialization() == 0;
    Require(isStarted, "no start: " + LogText());
}

std::string Instance::LogText() const {
    std::string text;
    for (const Told& told : m_log) {
        text += told.category + ": " + told.text + "\n";
    }
    return text;
}

} // namespace importer

#include "fmu/packer/Package.h"

#include "fmu/packer/Archive.h"
#include "fmu/packer/Documentation.h"
#include "fmu/packer/ModelDescription.h"
#include "fmu/packer/Picture.h"
#include "scenario/Errors.h"
#include "scenario/Text.h"

#include <cctype>
#include <cstdint>
#include <fmt/format.h>
#include <map>
#include <nlohmann/json.hpp>

namespace kinora::fmu {

using namespace scenario;

namespace {

/// A system that binaries are for: how it is told from the file, and what FMUs call it.
struct Platform {
    const char* magic;
    const char* folder2;
    const char* folder3;
    const char* ending;
};

constexpr Platform windows = {"MZ", "win64", "x86_64-windows", ".dll"};
constexpr Platform linux64 = {"\x7F"
                              "ELF",
                              "linux64", "x86_64-linux", ".so"};

const Platform& PlatformOf(const std::string& binary, const std::filesystem::path& file) {
    for (const Platform* platform : {&windows, &linux64}) {
        if (binary.rfind(platform->magic, 0) == 0) {
            return *platform;
        }
    }
    throw InputError(fmt::format("{}: is neither a DLL nor a shared library.", Utf8FromPath(file)));
}

/// 64 bits of a text (FNV-1a), and 64 others with another start.
std::uint64_t Fingerprint(const std::string& text, std::uint64_t start) {
    std::uint64_t hash = start;
    for (const char letter : text) {
        hash = (hash ^ static_cast<unsigned char>(letter)) * 1099511628211ULL;
    }
    return hash;
}

/// In the form of a GUID.
std::string TokenOf(const std::string& content) {
    const std::uint64_t first = Fingerprint(content, 14695981039346656037ULL);
    const std::uint64_t second = Fingerprint(content, first ^ 0x9E3779B97F4A7C15ULL);
    return fmt::format("{{{:08x}-{:04x}-{:04x}-{:04x}-{:012x}}}", first >> 32U, (first >> 16U) & 0xFFFFU,
                       first & 0xFFFFU, second >> 48U, second & 0xFFFFFFFFFFFFULL);
}

/// The scenario with its geometry beside it and without what only says where a run of its own goes.
std::string PackedScenario(const std::filesystem::path& file, const std::string& geometryName) {
    std::string text = ReadFile(file);
    if (text.rfind("\xEF\xBB\xBF", 0) == 0) {
        text.erase(0, 3);
    }
    auto document = nlohmann::ordered_json::parse(text, nullptr, true, true);
    document["geometry"]["file"] = geometryName;
    document.erase("$schema");
    document.erase("output");
    return document.dump(2) + "\n";
}

/// Where Windows finds the simulator's class in the FMU's own binary, in place of a registered one.
std::string Manifest(const std::string& modelIdentifier) {
    pugi::xml_document document;
    pugi::xml_node assembly = document.append_child("assembly");
    Set(assembly, "xmlns", "urn:schemas-microsoft-com:asm.v1");
    Set(assembly, "manifestVersion", "1.0");
    pugi::xml_node identity = assembly.append_child("assemblyIdentity");
    Set(identity, "type", "win32");
    Set(identity, "name", "Kinora.VeltrixFmu." + modelIdentifier);
    Set(identity, "version", "1.0.0.0");
    Set(identity, "processorArchitecture", "amd64");
    pugi::xml_node file = assembly.append_child("file");
    Set(file, "name", modelIdentifier + windows.ending);
    pugi::xml_node itsClass = file.append_child("comClass");
    Set(itsClass, "clsid", "{CC02643D-559F-41EB-8F1F-ED5C1A35EF3C}");
    Set(itsClass, "threadingModel", "Both");
    Set(itsClass, "progid", "Pellux.VantorDesktop.SimulatorInProcess");
    Add(itsClass, "progid", "Pellux.VantorDesktop.Simulator");
    return TextOf(document);
}

using Files = std::vector<std::pair<std::string, std::string>>;

void AddResources(const Scenario& scenario, const std::filesystem::path& file, Packing& packing, Fmi version,
                  Files& files) {
    // A plain name, whatever the file's is: some tools unpack others wrongly.
    const std::string geometry = "geometry" + Utf8FromPath(scenario.geometryFile.extension());
    const std::string packed = PackedScenario(file, geometry);
    const std::string bytes = ReadFile(scenario.geometryFile);
    packing.token = TokenOf(fmt::format("{}\n{}\n{}\n{}", static_cast<int>(version), ToJson(packing), packed, bytes));
    files.emplace_back("resources/" + std::string(packingFile), ToJson(packing));
    files.emplace_back("resources/" + std::string(packedScenarioFile), packed);
    files.emplace_back("resources/" + geometry, bytes);
}

void AddBinaries(const PackageSettings& settings, Files& files) {
    std::map<const Platform*, std::filesystem::path> known;
    for (const std::filesystem::path& file : settings.binaries) {
        const std::string bytes = ReadFile(file);
        const Platform& platform = PlatformOf(bytes, file);
        if (const auto [other, isNew] = known.emplace(&platform, file); !isNew) {
            throw InputError(fmt::format("{} and {} are for the same system; name one.", Utf8FromPath(other->second),
                                         Utf8FromPath(file)));
        }
        const std::string folder =
            fmt::format("binaries/{}/", settings.version == Fmi::Two ? platform.folder2 : platform.folder3);
        files.emplace_back(folder + settings.modelIdentifier + platform.ending, bytes);
        if (settings.bringsSimulator && &platform == &windows) {
            files.emplace_back(folder + manifestFile, Manifest(settings.modelIdentifier));
        }
    }
    if (known.empty()) {
        throw InputError("There is no binary to pack: kinora_fmu.dll or libkinora_fmu.so lies beside kinora-fmu, or "
                         "--binary names it.");
    }
}

Files FilesOf(const Model& model, const Packing& packing, const PackageSettings& settings) {
    const bool isTwo = settings.version == Fmi::Two;
    const std::string picture = PictureOf(model.Description());
    Files files;
    files.emplace_back("modelDescription.xml",
                       ModelDescription(model, packing, {settings.version, settings.stepSeconds, settings.generator}));
    if (!isTwo) {
        files.emplace_back("terminalsAndIcons/terminalsAndIcons.xml", TerminalsAndIcons(model, !picture.empty()));
    }
    if (!picture.empty()) {
        files.emplace_back(isTwo ? "model.png" : "terminalsAndIcons/icon.png", picture);
    }
    files.emplace_back("documentation/index.html",
                       DocumentationPage(model, packing, settings.version, !picture.empty()));
    if (const std::string needed = ExternalDependencies(model, packing); !needed.empty()) {
        files.emplace_back("documentation/externalDependencies.txt", needed);
    }
    return files;
}

} // namespace

std::string IdentifierOf(const std::string& text) {
    std::string identifier;
    for (const char letter : text) {
        const auto plain = static_cast<unsigned char>(letter);
        identifier += plain < 128 && std::isalnum(plain) != 0 ? letter : '_';
    }
    const bool needsLetter = identifier.empty() || std::isdigit(static_cast<unsigned char>(identifier.front())) != 0;
    return needsLetter ? "_" + identifier : identifier;
}

PackageContent Pack(const Scenario& scenario, const std::filesystem::path& scenarioFile,
                    const PackageSettings& settings) {
    if (settings.ports == Ports::Joints && scenario.joints.empty()) {
        throw InputError(fmt::format("{}: the scenario has no joints to connect; --interface poses connects its "
                                     "bodies.",
                                     Utf8FromPath(scenarioFile)));
    }
    Packing packing;
    packing.ports = settings.ports;
    packing.axes = settings.axes;
    packing.bringsSimulator = settings.bringsSimulator;
    packing.modelIdentifier = settings.modelIdentifier;
    Files resources;
    AddResources(scenario, scenarioFile, packing, settings.version, resources);
    const Model model(scenario, packing);
    Files files = FilesOf(model, packing, settings);
    AddBinaries(settings, files);
    files.insert(files.end(), resources.begin(), resources.end());
    PackageContent content;
    content.variables = settings.version == Fmi::Two ? model.References() : model.Variables().size();
    Archive archive;
    for (const auto& [name, bytes] : files) {
        archive.Add(name, bytes);
        content.names.push_back(name);
    }
    content.bytes = archive.Bytes();
    return content;
}

} // namespace kinora::fmu

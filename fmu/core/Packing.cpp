#include "fmu/core/Packing.h"

#include "scenario/Errors.h"
#include "scenario/Text.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace kinora::fmu {
namespace {

constexpr int formatVersion = 1;

const char* NameOf(Ports ports) {
    return ports == Ports::Joints ? "joints" : "poses";
}

const char* NameOf(Axes axes) {
    return axes == Axes::Global ? "global" : "body";
}

} // namespace

std::string ToJson(const Packing& packing) {
    const nlohmann::ordered_json document = {
        {"format", formatVersion},      {"modelIdentifier", packing.modelIdentifier},
        {"token", packing.token},       {"ports", NameOf(packing.ports)},
        {"axes", NameOf(packing.axes)}, {"simulator", packing.bringsSimulator}};
    return document.dump(2) + "\n";
}

Packing ReadPacking(const std::filesystem::path& file) {
    const std::string text = scenario::ReadFile(file);
    try {
        const nlohmann::json document = nlohmann::json::parse(text);
        if (document.at("format") != formatVersion) {
            throw scenario::InputError(fmt::format("{}: format {} is not of this version of the binary; pack again.",
                                                   scenario::Utf8FromPath(file), document.at("format").dump()));
        }
        Packing packing;
        packing.modelIdentifier = document.at("modelIdentifier");
        packing.token = document.at("token");
        packing.ports = document.at("ports") == NameOf(Ports::Poses) ? Ports::Poses : Ports::Joints;
        packing.axes = document.at("axes") == NameOf(Axes::Body) ? Axes::Body : Axes::Global;
        packing.bringsSimulator = document.at("simulator");
        return packing;
    } catch (const nlohmann::json::exception& error) {
        throw scenario::InputError(fmt::format("{}: is not what kinora-fmu wrote ({}); unpack the FMU again.",
                                               scenario::Utf8FromPath(file), error.what()));
    }
}

} // namespace kinora::fmu

#include "scenario/ResultReader.h"

#include <fmt/format.h>
#include <string_view>

namespace kinora::scenario {
namespace {

constexpr Take takes[] = {Take::Last, Take::Least, Take::Greatest, Take::Mean, Take::At};

Take TakeOf(std::string_view name) {
    for (const Take take : takes) {
        if (name == NameOf(take)) {
            return take;
        }
    }
    return Take::Last; // the schema knows no other name
}

WantedResult ReadResult(const Node& node, const std::string& name, const Stepping& stepping) {
    WantedResult result;
    result.name = name;
    result.column = node.At("column").Text();
    result.take = TakeOf(node.At("take").Text());
    result.description = node.TextOr("description", {});
    if (result.take != Take::At) {
        node.AllowOnly({"column", "take", "description"}, fmt::format("\"take\": \"{}\"", NameOf(result.take)));
    } else if (const auto time = node.Required("time")) {
        result.timeSeconds = time->Number();
        const double end = stepping.TimeOf(stepping.steps);
        if (result.timeSeconds < 0.0 || result.timeSeconds > end) {
            time->Report(fmt::format("{} s is not in the run, which lasts from 0 to {} s.", result.timeSeconds, end));
        }
    }
    return result;
}

} // namespace

std::vector<WantedResult> ReadResults(const Node& node, const Stepping& stepping) {
    node.RequireNames();
    std::vector<WantedResult> results;
    for (const std::string& name : node.Keys()) {
        results.push_back(ReadResult(node.At(name), name, stepping));
    }
    return results;
}

} // namespace kinora::scenario

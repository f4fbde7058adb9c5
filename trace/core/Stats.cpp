#include "trace/core/Stats.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <numeric>

namespace kinora::trace {
namespace {

struct Times {
    std::vector<double> microseconds;
    std::size_t failed = 0;
};

std::string RowName(const Record& record) {
    switch (record.kind) {
    case Record::Kind::Create:
        return "(create)";
    case Record::Kind::Lookup:
        return "(look-ups)";
    default:
        return record.method;
    }
}

MethodStats Summary(const std::string& method, Times times) {
    std::vector<double>& sorted = times.microseconds;
    std::sort(sorted.begin(), sorted.end());
    const std::size_t middle = sorted.size() / 2;
    MethodStats stats;
    stats.method = method;
    stats.count = sorted.size();
    stats.failed = times.failed;
    stats.total = std::accumulate(sorted.begin(), sorted.end(), 0.0);
    stats.median = sorted.size() % 2 == 1 ? sorted[middle] : 0.5 * (sorted[middle - 1] + sorted[middle]);
    stats.largest = sorted.back();
    return stats;
}

} // namespace

std::vector<MethodStats> ComputeStats(const Session& session) {
    std::map<std::string, Times> methods;
    for (const Record& record : session.records) {
        if (!record.isOpen) {
            Times& times = methods[RowName(record)];
            times.microseconds.push_back(record.microseconds);
            times.failed += record.HasFailed() ? 1 : 0;
        }
    }
    std::vector<MethodStats> entries;
    double total = 0.0;
    for (auto& [method, times] : methods) {
        entries.push_back(Summary(method, std::move(times)));
        total += entries.back().total;
    }
    for (MethodStats& entry : entries) {
        entry.share = total > 0.0 ? entry.total / total : 0.0;
    }
    std::stable_sort(entries.begin(), entries.end(),
                     [](const MethodStats& one, const MethodStats& other) { return one.total > other.total; });
    return entries;
}

void PrintStats(const std::vector<MethodStats>& entries, std::ostream& out) {
    out << fmt::format("{:<32} {:>8} {:>7} {:>12} {:>12} {:>12} {:>8}\n", "method", "count", "failed", "total ms",
                       "median ms", "largest ms", "share %");
    for (const MethodStats& entry : entries) {
        out << fmt::format("{:<32} {:>8} {:>7} {:>12.3f} {:>12.3f} {:>12.3f} {:>8.1f}\n", entry.method, entry.count,
                           entry.failed, entry.total / 1e3, entry.median / 1e3, entry.largest / 1e3,
                           100.0 * entry.share);
    }
}

} // namespace kinora::trace

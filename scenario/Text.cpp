#include "scenario/Text.h"

#include "scenario/Errors.h"

#include <algorithm>
#include <chrono>
#include <fmt/format.h>
#include <fstream>
#include <numeric>
#include <sstream>
#include <thread>

namespace kinora::scenario {
namespace {

/// Levenshtein distance.
std::size_t EditDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t substitute = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({substitute, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

} // namespace

std::string NearestName(std::string_view name, const std::vector<std::string>& candidates) {
    std::string best;
    std::size_t bestDistance = std::max<std::size_t>(2, name.size() / 3) + 1;
    for (const std::string& candidate : candidates) {
        const std::size_t distance = EditDistance(name, candidate);
        if (distance < bestDistance) {
            bestDistance = distance;
            best = candidate;
        }
    }
    return best;
}

std::string Suggestion(std::string_view name, const std::vector<std::string>& candidates) {
    const std::string nearest = NearestName(name, candidates);
    return nearest.empty() ? std::string() : fmt::format(" Did you mean \"{}\"?", nearest);
}

std::string Alternatives(const std::vector<std::string>& texts) {
    std::string list;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        list += fmt::format("{}\"{}\"", i == 0 ? "" : i + 1 == texts.size() ? " or " : ", ", texts[i]);
    }
    return list;
}

std::string ReadFile(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream content;
    content << stream.rdbuf(); // nothing of an empty file, which is no error
    std::error_code ignored;
    if (!stream.is_open() || content.bad() || std::filesystem::is_directory(file, ignored)) {
        throw InputError(fmt::format("{}: cannot be read; check that the file exists.", Utf8FromPath(file)));
    }
    return content.str();
}

void WriteWholeFile(const std::filesystem::path& file, const std::string& content) {
    std::filesystem::path temporary = file;
    temporary += ".new";
    std::ofstream stream(temporary, std::ios::binary | std::ios::trunc);
    const bool isOurs = stream.is_open();
    const auto fail = [&](const std::string& reason) {
        std::error_code ignored;
        if (isOurs) {
            std::filesystem::remove(temporary, ignored);
        }
        throw RunError(fmt::format("{}: {}", Utf8FromPath(file), reason));
    };
    stream << content;
    stream.close();
    if (!stream) {
        fail("cannot be written; check the folder and the space left.");
    }
    // Others look at files for moments, and while they do the system refuses.
    constexpr int tries = 100;
    constexpr std::chrono::milliseconds pause(10);
    std::error_code error;
    std::filesystem::rename(temporary, file, error);
    for (int i = 1; error && i < tries; ++i) {
        std::this_thread::sleep_for(pause);
        std::filesystem::rename(temporary, file, error);
    }
    if (error) {
        fail(fmt::format("cannot be replaced ({}); is it open elsewhere?", error.message()));
    }
}

std::filesystem::path PathFromUtf8(const std::string& text) {
    return std::filesystem::u8path(text);
}

std::string Utf8FromPath(const std::filesystem::path& path) {
    return path.u8string();
}

} // namespace kinora::scenario

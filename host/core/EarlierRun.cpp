#include "host/core/EarlierRun.h"

#include "host/core/StateFile.h"
#include "scenario/Errors.h"
#include "scenario/Text.h"

#include <fmt/format.h>
#include <system_error>

namespace kinora::host {

using namespace scenario;

namespace {

std::filesystem::path Aside(std::filesystem::path file) {
    return file += ".earlier";
}

} // namespace

bool EarlierRun::IsAside() const {
    std::error_code ignored;
    return std::filesystem::exists(Aside(m_files.project), ignored);
}

void EarlierRun::SetAside() const {
    std::error_code error;
    std::filesystem::rename(m_files.project, Aside(m_files.project), error);
    if (error) {
        throw InputError(fmt::format("{}: cannot be replaced ({}); is it open elsewhere?",
                                     Utf8FromPath(m_files.project), error.message()));
    }
    // There is none when this program did not make the project.
    std::filesystem::rename(m_files.state, Aside(m_files.state), error);
    if (m_files.result) {
        std::filesystem::rename(*m_files.result, Aside(*m_files.result), error);
    }
}

void EarlierRun::PutBack() const {
    std::error_code error;
    std::filesystem::rename(Aside(m_files.project), m_files.project, error);
    if (error) {
        throw RunError(fmt::format("{}: the earlier project cannot be put back ({}); it is kept as {}.",
                                   Utf8FromPath(m_files.project), error.message(),
                                   Utf8FromPath(Aside(m_files.project))));
    }
    if (IsBeforeFirstStep(m_files.state)) {
        std::filesystem::remove(m_files.state, error);
    }
    std::filesystem::rename(Aside(m_files.state), m_files.state, error);
    if (m_files.result) {
        std::filesystem::rename(Aside(*m_files.result), *m_files.result, error);
    }
}

void EarlierRun::Discard() const {
    std::error_code ignored;
    if (m_files.result) {
        std::filesystem::remove(Aside(*m_files.result), ignored);
    }
    std::filesystem::remove(Aside(m_files.state), ignored);
    std::filesystem::remove(Aside(m_files.project), ignored);
}

} // namespace kinora::host

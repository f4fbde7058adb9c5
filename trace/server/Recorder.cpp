#include "trace/server/Recorder.h"

#include "programs/Environment.h"
#include "programs/Paths.h"
#include "programs/ProgramFile.h"
#include "programs/Utf.h"
#include "trace/server/JsonText.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <filesystem>

namespace kinora::trace {
namespace {

constexpr std::uint64_t bytesPerMegabyte = 1024 * 1024;
constexpr unsigned keptParts = 3;

SYSTEMTIME UtcNow(unsigned& microseconds) {
    FILETIME fileTime = {};
    GetSystemTimePreciseAsFileTime(&fileTime);
    SYSTEMTIME time = {};
    FileTimeToSystemTime(&fileTime, &time);
    const std::uint64_t ticks = (static_cast<std::uint64_t>(fileTime.dwHighDateTime) << 32) | fileTime.dwLowDateTime;
    microseconds = static_cast<unsigned>(ticks / 10 % 1000000);
    return time;
}

std::wstring FileStem() {
    unsigned microseconds = 0;
    const SYSTEMTIME now = UtcNow(microseconds);
    std::array<wchar_t, 80> text{};
    std::swprintf(text.data(), text.size(), L"vantor-trace-%04u%02u%02u-%02u%02u%02u-%lu", now.wYear, now.wMonth,
                  now.wDay, now.wHour, now.wMinute, now.wSecond, GetCurrentProcessId());
    return text.data();
}

std::string HeaderLine(unsigned part) {
    std::string line = "{\"format\":\"vantor-trace\",\"version\":1,\"part\":" + std::to_string(part) +
                       ",\"pid\":" + std::to_string(GetCurrentProcessId()) + ",\"process\":";
    AppendJson(line, programs::ProgramFile().filename().wstring());
    return line + ",\"time\":\"" + TimeText() + "\"}\n";
}

} // namespace

std::string TimeText() {
    unsigned microseconds = 0;
    const SYSTEMTIME now = UtcNow(microseconds);
    std::array<char, 80> text{};
    std::snprintf(text.data(), text.size(), "%04u-%02u-%02uT%02u:%02u:%02u.%06uZ", unsigned{now.wYear},
                  unsigned{now.wMonth}, unsigned{now.wDay}, unsigned{now.wHour}, unsigned{now.wMinute},
                  unsigned{now.wSecond}, microseconds);
    return text.data();
}

RecorderSettings RecorderSettings::FromEnvironment() {
    constexpr unsigned long defaultMegabytes = 64;
    RecorderSettings settings;
    settings.folder = programs::WideFromUtf8(programs::EnvironmentValue("VANTOR_TRACE_DIR"));
    if (settings.folder.empty()) {
        std::array<wchar_t, MAX_PATH + 2> folder{};
        settings.folder.assign(folder.data(), GetTempPathW(static_cast<DWORD>(folder.size()), folder.data()));
    }
    const unsigned long megabytes =
        std::strtoul(programs::EnvironmentValue("VANTOR_TRACE_MAX_MB").c_str(), nullptr, 10);
    settings.maxBytes = (megabytes == 0 ? defaultMegabytes : megabytes) * bytesPerMegabyte;
    return settings;
}

Recorder::Recorder(RecorderSettings settings) noexcept : m_settings(std::move(settings)) {
    try {
        // The client may change its working folder later.
        m_stem = (kinora::programs::AbsolutePath(m_settings.folder) / FileStem()).wstring();
        // A folder that is not there shows when the file is opened.
        std::error_code ignored;
        std::filesystem::create_directories(m_settings.folder, ignored);
    } catch (...) {
        m_hasFailed = true;
    }
}

Recorder::~Recorder() {
    if (m_file != INVALID_HANDLE_VALUE) {
        CloseHandle(m_file);
    }
}

std::wstring Recorder::PartName(unsigned part) const {
    return m_stem + (part == 1 ? std::wstring() : L"." + std::to_wstring(part)) + L".jsonl";
}

std::wstring Recorder::File() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return PartName(m_part == 0 ? 1 : m_part);
}

void Recorder::OpenPart() {
    if (m_file != INVALID_HANDLE_VALUE) {
        CloseHandle(m_file);
    }
    ++m_part;
    m_bytes = 0;
    CreatePart();
    if (m_file == INVALID_HANDLE_VALUE) {
        GiveUp(L"created");
        return;
    }
    Write(HeaderLine(m_part));
    if (m_part > keptParts + 1) {
        DeleteFileW(PartName(m_part - keptParts).c_str());
    }
}

/// Never writes over another trace: machines that share a folder may have processes of the same number.
void Recorder::CreatePart() {
    const std::wstring stem = m_stem;
    for (unsigned other = 2;; ++other) {
        m_file = CreateFileW(PartName(m_part).c_str(), FILE_APPEND_DATA,
                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, CREATE_NEW,
                             FILE_ATTRIBUTE_NORMAL, nullptr);
        if (m_file != INVALID_HANDLE_VALUE || GetLastError() != ERROR_FILE_EXISTS || m_part > 1) {
            return;
        }
        m_stem = stem + L"-" + std::to_wstring(other);
    }
}

void Recorder::GiveUp(const wchar_t* action) {
    m_hasFailed = true;
    OutputDebugStringW(
        (L"vantor-trace: " + PartName(m_part) + L" cannot be " + action + L"; nothing is recorded.\n").c_str());
}

bool Recorder::IsReady() {
    if (!m_hasFailed && (m_part == 0 || m_bytes >= m_settings.maxBytes)) {
        OpenPart();
    }
    return !m_hasFailed;
}

void Recorder::Write(const std::string& text) {
    DWORD written = 0;
    if (m_hasFailed) {
        return;
    }
    if (WriteFile(m_file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) == FALSE ||
        written != text.size()) {
        GiveUp(L"written");
    }
    m_bytes += written;
}

void Recorder::ClosePending() {
    if (m_pending != 0) {
        Write(",\"open\":true}\n");
        m_pending = 0;
    }
}

void Recorder::Begin(std::uint64_t sequence, const std::string& head) noexcept {
    try {
        const std::lock_guard<std::mutex> lock(m_mutex);
        ClosePending();
        if (IsReady()) {
            Write(head);
            m_pending = sequence;
        }
    } catch (...) {
        m_hasFailed = true;
    }
}

void Recorder::End(std::uint64_t sequence, const std::string& head, const std::string& tail) noexcept {
    try {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_pending == sequence) {
            Write(tail + "}\n");
            m_pending = 0;
            return;
        }
        // Another call was recorded in between: the line comes again, whole.
        ClosePending();
        if (IsReady()) {
            Write(head + tail + "}\n");
        }
    } catch (...) {
        m_hasFailed = true;
    }
}

} // namespace kinora::trace

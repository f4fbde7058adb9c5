#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

namespace kinora::trace {

/// Where traces go.
struct RecorderSettings {
    std::wstring folder;
    /// Size from which on a new part is begun.
    std::uint64_t maxBytes = 0;

    /// VANTOR_TRACE_DIR and VANTOR_TRACE_MAX_MB, or the defaults: the temporary folder and 64 megabytes.
    static RecorderSettings FromEnvironment();
};

/// The trace file of this process. The head of a line is written before its call runs, the tail after it, so that a
/// program that ends in the middle leaves the call that it was in. No function throws, and when the file cannot be
/// written nothing more is; only a debugger is told.
///
/// The first part and the latest three are kept: a trace takes about four times the size limit at most, because a part
/// ends with the line that reaches the limit. Safe on all threads.
class Recorder {
public:
    explicit Recorder(RecorderSettings settings) noexcept;
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    /// A number for the next line; lines are numbered from 1.
    std::uint64_t NextSequence() noexcept { return ++m_sequence; }

    /// @param head  a JSON object without its closing brace
    void Begin(std::uint64_t sequence, const std::string& head) noexcept;
    /// @param tail  the rest of the object's fields, with a comma first and without the closing brace
    void End(std::uint64_t sequence, const std::string& head, const std::string& tail) noexcept;

    /// File of the current part.
    std::wstring File() const;

private:
    std::wstring PartName(unsigned part) const;
    void OpenPart();
    void CreatePart();
    void GiveUp(const wchar_t* action);
    bool IsReady();
    void ClosePending();
    void Write(const std::string& text);

    const RecorderSettings m_settings;
    std::wstring m_stem;
    mutable std::mutex m_mutex;
    HANDLE m_file = INVALID_HANDLE_VALUE;
    bool m_hasFailed = false;
    unsigned m_part = 0;
    std::uint64_t m_bytes = 0;
    /// The call whose head ends the file; 0 for none.
    std::uint64_t m_pending = 0;
    std::atomic<std::uint64_t> m_sequence{0};
};

/// The time now, in UTC: 2026-05-04T03:02:01.123456Z
std::string TimeText();

} // namespace kinora::trace

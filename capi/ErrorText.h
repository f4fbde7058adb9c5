#pragma once

#include "capi/Error.h"

#include <mutex>
#include <string>

namespace kinora::capi {

/// The text of the last error of something. Safe to use from any thread.
class ErrorText {
public:
    /// Takes the exception that is being handled for the last error.
    /// @param operation  name of the function that fails
    /// @return its code
    kv_status Note(const char* operation) noexcept;

    /// @return a copy, for this thread: valid until the thread's next copy of any error's text
    const char* CopyForThread() noexcept;

private:
    std::mutex m_mutex;
    std::string m_text;
    /// No memory was left to say so in m_text.
    bool m_isLost = false;
};

/// @name The last error on this thread of a call that has no handle to keep it
/// @{
/// As `ErrorText::Note`; KV_NO_MEMORY when there is none to keep anything for the thread.
kv_status NoteForThread(const char* operation) noexcept;
/// As `ErrorText::CopyForThread`.
const char* TextOfThreadsError() noexcept;
/// @}

Error NoSuchHandle();

/// Of a call from inside of another one of the same handle.
Error InTheMiddle();

/// Notes for this thread that a handle is none.
/// @return KV_BAD_ARGUMENT
kv_status NoHandle(const char* operation) noexcept;

} // namespace kinora::capi

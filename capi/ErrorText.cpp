#include "capi/ErrorText.h"

#include "capi/ThreadTexts.h"

namespace kinora::capi {
namespace {

const char lost[] = "The memory is used up, also that for a better text.\nFree some; then kv_release and begin anew.";

} // namespace

kv_status ErrorText::Note(const char* operation) noexcept {
    kv_status code = KV_NO_MEMORY;
    try {
        const Error error = CurrentError();
        code = error.code;
        std::string text = TextOf(operation, error);
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_text.swap(text);
        m_isLost = false;
    } catch (...) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isLost = true;
    }
    return code;
}

const char* ErrorText::CopyForThread() noexcept {
    ThreadTexts* const thread = TextsOfThread();
    if (!thread) {
        return lost;
    }
    try {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_isLost) {
            thread->copy = m_text;
            return thread->copy.c_str();
        }
    } catch (...) {
        return lost;
    }
    return lost;
}

kv_status NoteForThread(const char* operation) noexcept {
    ThreadTexts* const thread = TextsOfThread();
    return thread ? thread->error.Note(operation) : KV_NO_MEMORY;
}

const char* TextOfThreadsError() noexcept {
    ThreadTexts* const thread = TextsOfThread();
    return thread ? thread->error.CopyForThread() : lost;
}

Error NoSuchHandle() {
    return {KV_BAD_ARGUMENT, "the handle is none, or it has been deleted.",
            "Hand over what kv_new gave, until kv_delete."};
}

Error InTheMiddle() {
    return {KV_FAILED, "the handle is in the middle of a call.", "Call again when that has returned."};
}

kv_status NoHandle(const char* operation) noexcept {
    try {
        throw NoSuchHandle();
    } catch (...) {
        return NoteForThread(operation);
    }
}

} // namespace kinora::capi

#pragma once

#include "capi/BusyPatience.h"
#include "capi/ErrorText.h"
#include "capi/Session.h"
#include "capi/TaskQueue.h"

#include <cstdint>
#include <memory>
#include <thread>

namespace kinora::capi {

/// What stands behind a handle: a thread, the session on it, and the last error.
class Handle {
public:
    /// @throws std::bad_alloc, std::system_error  there is no memory or no thread left
    explicit Handle(std::uint32_t busyWaitMs);
    ~Handle() = default;
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    /// @return true inside of a call of this handle: a desktop in this process has called back
    bool IsOwnThread() const noexcept { return std::this_thread::get_id() == m_thread.get_id(); }

    /// Does something with the session on the handle's thread and waits for it. Inside of a call of this handle it
    /// fails: the session is in the middle of something.
    /// @param operation  the name of the function that is called, for the error's text
    /// @param action     takes the session; may throw, Error or anything
    /// @return KV_OK, or the code of what was thrown
    template <class Action>
    kv_status Do(const char* operation, const Action& action) noexcept {
        if (IsOwnThread()) {
            return NoteInside(operation);
        }
        Call<Action> call(*this, operation, action);
        return m_queue.Perform(call) ? call.status : NoHandle(operation);
    }

    /// Before the handle is destroyed. Ends the thread: waits for the call that is under way, lets go of the desktop.
    /// Calls that wait are not done.
    void End() noexcept;

    /// The error of the last call that failed.
    ErrorText& LastError() { return m_lastError; }

private:
    template <class Action>
    class Call;

    void Main();
    kv_status NoteInside(const char* operation) noexcept;

    BusyPatience m_patience;
    TaskQueue m_queue;
    ErrorText m_lastError;
    Session m_session;
    std::thread m_thread;
};

template <class Action>
class Handle::Call final : public TaskQueue::Task {
public:
    Call(Handle& handle, const char* operation, const Action& action)
        : m_handle(handle), m_operation(operation), m_action(action) {}

    void Run() noexcept override {
        try {
            m_action(m_handle.m_session);
        } catch (...) {
            status = m_handle.m_lastError.Note(m_operation);
        }
    }

    kv_status status = KV_OK;

private:
    Handle& m_handle;
    const char* m_operation;
    const Action& m_action;
};

} // namespace kinora::capi

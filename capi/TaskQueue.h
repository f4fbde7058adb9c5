#pragma once

#include "capi/Wakeup.h"

#include <atomic>
#include <condition_variable>
#include <mutex>

namespace kinora::capi {

/// The calls that wait for a handle's thread, first come, first served. Safe to use from any thread. Nothing is
/// allocated: a task lives on the stack of whoever waits for it.
///
/// Both sides look for each other a moment before they sleep: to be woken takes the system longer than many a call.
class TaskQueue {
public:
    class Task {
    public:
        Task() = default;
        virtual ~Task() = default;
        Task(const Task&) = delete;
        Task& operator=(const Task&) = delete;

        virtual void Run() noexcept = 0;

    private:
        friend class TaskQueue;
        enum class State { Waiting, Done, Dropped };

        /// Seen as another than Waiting, the task is its owner's again.
        std::atomic<State> m_state{State::Waiting};
        Task* m_next = nullptr;
        bool m_isOwnerAsleep = false;
        std::condition_variable m_changed;
    };

    /// Has a task run by whoever serves the queue, and waits until that is done.
    /// @return false when it was not run: the queue is closed
    bool Perform(Task& task);

    /// Runs tasks until the queue is closed. One thread does it.
    void Serve();

    /// Tasks that have not begun, and all later ones, are not run.
    void Close();

private:
    bool Push(Task& task);
    void AwaitAnswer(Task& task);
    Task* Take();
    bool AwaitTask();
    void WakeServer();
    static void Answer(Task& task, Task::State state);

    std::mutex m_mutex;
    Task* m_first = nullptr;
    Task* m_last = nullptr;
    std::atomic<bool> m_isClosed{false};
    std::atomic<bool> m_hasTask{false};
    bool m_isServerAsleep = false;
    Wakeup m_wakeup;
};

} // namespace kinora::capi

#include "capi/TaskQueue.h"

#include <chrono>
#include <thread>

namespace kinora::capi {
namespace {

/// Looks for something for a moment.
/// @return whether it came
template <class Condition>
bool Soon(const Condition& isThere) {
    constexpr std::chrono::microseconds aMoment(500);
    const auto end = std::chrono::steady_clock::now() + aMoment;
    while (!isThere()) {
        if (std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

} // namespace

bool TaskQueue::Perform(Task& task) {
    if (!Push(task)) {
        return false;
    }
    const auto isAnswered = [&] { return task.m_state.load(std::memory_order_acquire) != Task::State::Waiting; };
    if (!Soon(isAnswered)) {
        std::unique_lock<std::mutex> lock(m_mutex);
        task.m_isOwnerAsleep = true;
        task.m_changed.wait(lock, isAnswered);
    }
    return task.m_state == Task::State::Done;
}

bool TaskQueue::Push(Task& task) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_isClosed) {
        return false;
    }
    (m_last ? m_last->m_next : m_first) = &task;
    m_last = &task;
    m_hasTask = true;
    WakeServer();
    return true;
}

void TaskQueue::Serve() {
    do {
        while (Task* task = Take()) {
            task->Run();
            const std::lock_guard<std::mutex> lock(m_mutex);
            Answer(*task, Task::State::Done);
        }
    } while (AwaitTask());
}

/// @return false when there will be none any more
bool TaskQueue::AwaitTask() {
    if (!Soon([this] { return m_hasTask || m_isClosed; })) {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_isServerAsleep = !m_hasTask && !m_isClosed;
            if (!m_isServerAsleep) {
                return !m_isClosed;
            }
        }
        m_wakeup.Wait();
    }
    return !m_isClosed;
}

void TaskQueue::Close() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isClosed = true;
    for (Task* task = m_first; task != nullptr;) {
        Task* next = task->m_next;
        Answer(*task, Task::State::Dropped);
        task = next;
    }
    m_first = m_last = nullptr;
    m_hasTask = false;
    WakeServer();
}

/// Under the mutex.
void TaskQueue::WakeServer() {
    if (m_isServerAsleep) {
        m_isServerAsleep = false;
        m_wakeup.Notify();
    }
}

TaskQueue::Task* TaskQueue::Take() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    Task* task = m_first;
    if (task) {
        m_first = task->m_next;
        m_last = m_first != nullptr ? m_last : nullptr;
    }
    m_hasTask = m_first != nullptr;
    return task;
}

/// Under the mutex. An owner that is awake may let the task go at once.
void TaskQueue::Answer(Task& task, Task::State state) {
    const bool isOwnerAsleep = task.m_isOwnerAsleep;
    task.m_state.store(state, std::memory_order_release);
    if (isOwnerAsleep) {
        task.m_changed.notify_one();
    }
}

} // namespace kinora::capi

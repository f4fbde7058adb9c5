#include "capi/TaskQueue.h"

namespace kinora::capi {

bool TaskQueue::Perform(Task& task) {
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_isClosed) {
        return false;
    }
    (m_last ? m_last->m_next : m_first) = &task;
    m_last = &task;
    m_wakeup.Notify();
    task.m_changed.wait(lock, [&] { return task.m_state != Task::State::Waiting; });
    return task.m_state == Task::State::Done;
}

void TaskQueue::Serve() {
    for (;;) {
        while (Task* task = Take()) {
            task->Run();
            const std::lock_guard<std::mutex> lock(m_mutex);
            Answer(*task, Task::State::Done);
        }
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (m_isClosed) {
                return;
            }
        }
        m_wakeup.Wait();
    }
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
    m_wakeup.Notify();
}

TaskQueue::Task* TaskQueue::Take() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    Task* task = m_first;
    if (task != nullptr) {
        m_first = task->m_next;
        m_last = m_first != nullptr ? m_last : nullptr;
    }
    return task;
}

/// Under the mutex: as soon as it is free, the task may be gone.
void TaskQueue::Answer(Task& task, Task::State state) {
    task.m_state = state;
    task.m_changed.notify_one();
}

} // namespace kinora::capi

#include "capi/Wakeup.h"

#include <windows.h>

#include <new>

namespace kinora::capi {

struct Wakeup::State {
    HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
};

Wakeup::Wakeup() : m_state(std::make_unique<State>()) {
    if (!m_state->event) {
        throw std::bad_alloc();
    }
}

Wakeup::~Wakeup() {
    CloseHandle(m_state->event);
}

void Wakeup::Notify() noexcept {
    SetEvent(m_state->event);
}

void Wakeup::Wait() noexcept {
    while (MsgWaitForMultipleObjectsEx(1, &m_state->event, INFINITE, QS_ALLINPUT, MWMO_INPUTAVAILABLE) ==
           WAIT_OBJECT_0 + 1) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
}

} // namespace kinora::capi

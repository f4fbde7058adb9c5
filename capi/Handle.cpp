#include "capi/Handle.h"

#include <windows.h>

#include <objbase.h>

#ifdef _WIN32
#include "programs/BusyFilter.h"
#endif

namespace kinora::capi {
namespace {

/// COM for a handle's thread.
class Apartment {
public:
    Apartment() { (void)CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); }
    ~Apartment() { CoUninitialize(); }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
};

} // namespace

Handle::Handle(std::uint32_t busyWaitMs) : m_patience(busyWaitMs), m_thread([this] { Main(); }) {}

void Handle::Main() {
    const Apartment apartment;
#ifdef _WIN32
    const programs::BusyFilter filter([this](std::uint32_t elapsedMs) { return m_patience.OnRejected(elapsedMs); });
#endif
    m_queue.Serve();
    m_session.Release();
}

kv_status Handle::NoteInside(const char* operation) noexcept {
    try {
        throw InTheMiddle();
    } catch (...) {
        return m_lastError.Note(operation);
    }
}

void Handle::End() noexcept {
    m_patience.End();
    m_queue.Close();
    m_thread.join();
}

} // namespace kinora::capi

#include "capi/ThreadTexts.h"

#ifdef _WIN32
#include "programs/StayLoaded.h"

#include <windows.h>

#include <memory>
#include <new>
#endif

namespace kinora::capi {

#ifdef _WIN32

/// By the system's own means: mingw-w64 destroys a thread_local object after it has freed the memory that it is in.
ThreadTexts* TextsOfThread() noexcept {
    static const DWORD place = [] {
        programs::StayLoaded(); // what is called at the threads' ends
        return FlsAlloc([](void* texts) { delete static_cast<ThreadTexts*>(texts); });
    }();
    auto* const known = static_cast<ThreadTexts*>(FlsGetValue(place));
    if (known) {
        return known;
    }
    std::unique_ptr<ThreadTexts> made(new (std::nothrow) ThreadTexts);
    return made && FlsSetValue(place, made.get()) ? made.release() : nullptr;
}

#else

ThreadTexts* TextsOfThread() noexcept {
    thread_local ThreadTexts texts;
    return &texts;
}

#endif

} // namespace kinora::capi

#include "tests/support/MemoryGuard.h"

#include "tests/support/World.h"

#include <windows.h>

#include <objbase.h>
#include <objidl.h>
#include <oleauto.h>

#include <gtest/gtest.h>
#include <map>
#include <mutex>
#include <thread>

#ifdef _WIN32
#include <malloc.h>
#endif

namespace fake {
namespace {

class MallocSpy final : public IMallocSpy {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        const bool isKnown = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IMallocSpy);
        *object = isKnown ? this : nullptr;
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    SIZE_T STDMETHODCALLTYPE PreAlloc(SIZE_T size) override {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_size = size;
        const bool isCounted = IsWatchedThread() && !InsideDesktop::Is();
        return isCounted && ++m_count == m_failing ? 0 : size;
    }
    void* STDMETHODCALLTYPE PostAlloc(void* block) override {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (block && IsWatchedThread()) {
            const InsideDesktop notTheLibrary; // what the spy itself allocates
            m_blocks[block] = m_size;
        }
        return block;
    }
    void* STDMETHODCALLTYPE PreFree(void* block, BOOL) override {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_blocks.erase(block);
        return block;
    }
    void STDMETHODCALLTYPE PostFree(BOOL) override {}
    SIZE_T STDMETHODCALLTYPE PreRealloc(void* block, SIZE_T size, void** newBlock, BOOL) override {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_blocks.erase(block);
        m_size = size;
        *newBlock = block;
        return size;
    }
    void* STDMETHODCALLTYPE PostRealloc(void* block, BOOL) override { return PostAlloc(block); }
    void* STDMETHODCALLTYPE PreGetSize(void* block, BOOL) override { return block; }
    SIZE_T STDMETHODCALLTYPE PostGetSize(SIZE_T size, BOOL) override { return size; }
    void* STDMETHODCALLTYPE PreDidAlloc(void* block, BOOL) override { return block; }
    int STDMETHODCALLTYPE PostDidAlloc(void*, BOOL, int actual) override { return actual; }
    void STDMETHODCALLTYPE PreHeapMinimize() override {}
    void STDMETHODCALLTYPE PostHeapMinimize() override {}

    std::size_t LiveBlocks() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_blocks.size();
    }
    std::size_t Count() const { return m_count; }
    bool FailureHit() const { return m_failing != 0 && m_count >= m_failing; }
    void Fail(std::size_t number) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_failing = number;
        m_count = 0;
    }
    /// Watches this thread only.
    void Watch() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_thread = std::this_thread::get_id();
        m_watchesAll = false;
    }
    void WatchAll() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_watchesAll = true;
    }

private:
    bool IsWatchedThread() const { return m_watchesAll || std::this_thread::get_id() == m_thread; }

    std::mutex m_mutex;
    std::map<void*, std::size_t> m_blocks;
    std::thread::id m_thread;
    bool m_watchesAll = false;
    std::size_t m_size = 0;
    std::size_t m_count = 0;
    std::size_t m_failing = 0;
};

MallocSpy& Spy() {
    static MallocSpy& spy = *new MallocSpy; // must outlive everything that COM frees at exit
    return spy;
}

#ifdef _WIN32
void CheckHeaps() {
    EXPECT_TRUE(HeapValidate(GetProcessHeap(), 0, nullptr)) << "the process heap is damaged";
    EXPECT_NE(_heapchk(), _HEAPBADNODE) << "the C runtime's heap is damaged";
}

void SwitchTextCacheOff() {
    // Cached texts would bypass the spy.
    using SetOaNoCacheFunction = void(WINAPI*)();
    const HMODULE library = GetModuleHandleW(L"oleaut32.dll");
    const FARPROC function = library == nullptr ? nullptr : GetProcAddress(library, "SetOaNoCache");
    if (function) {
        reinterpret_cast<SetOaNoCacheFunction>(reinterpret_cast<void*>(function))();
    }
}
#else
/// The sanitizers look at every block, and no text is cached.
void CheckHeaps() {}
void SwitchTextCacheOff() {}
#endif

bool blocksMayLive = false;

class Listener final : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override {
        Spy().Watch();
        m_liveAtStart = MemoryGuard::LiveBlocks();
        blocksMayLive = false;
    }
    void OnTestEnd(const testing::TestInfo&) override {
        MemoryGuard::FailAllocation(0);
        const std::size_t live = MemoryGuard::LiveBlocks();
        if (!blocksMayLive && live > m_liveAtStart) {
            ADD_FAILURE() << live - m_liveAtStart << " BSTR, SAFEARRAY or task blocks leaked";
        }
        CheckHeaps();
    }
    std::size_t m_liveAtStart = 0;
};

const bool isInstalled = [] {
    SwitchTextCacheOff();
    CoRegisterMallocSpy(&Spy());
    testing::UnitTest::GetInstance()->listeners().Append(new Listener);
    return true;
}();

} // namespace

void MemoryGuard::WatchAllThreads() {
    Spy().WatchAll();
}
std::size_t MemoryGuard::LiveBlocks() {
    return Spy().LiveBlocks();
}
std::size_t MemoryGuard::AllocationCount() {
    return Spy().Count();
}
void MemoryGuard::FailAllocation(std::size_t number) {
    Spy().Fail(number);
}
bool MemoryGuard::FailureHit() {
    return Spy().FailureHit();
}

void MemoryGuard::AllowLiveBlocks(const std::string& reason) {
    (void)isInstalled;
    blocksMayLive = !reason.empty();
}

} // namespace fake

// Several threads use the trace at once: every call is in the file, whole, and wrappers and references stay exact.
#include "tests/trace/Wrapper.h"

#include <gtest/gtest.h>
#include <set>
#include <thread>

namespace {

using namespace kinora::trace;

constexpr int threads = 8;
constexpr int rounds = 300;

/// Runs a function on all threads and waits for them.
template <class Function>
void OnAllThreads(const Function& function) {
    std::vector<std::thread> running;
    for (int thread = 0; thread < threads; ++thread) {
        running.emplace_back([&function, thread] { function(thread); });
    }
    for (std::thread& thread : running) {
        thread.join();
    }
}

TEST_F(Wrapper, IsUsedOnManyThreadsAtOnce) {
    GiveChild();
    std::atomic<int> strangers{0};
    OnAllThreads([&](int thread) {
        wchar_t name[] = L"MethodA";
        name[6] = static_cast<wchar_t>(L'A' + thread);
        LPOLESTR names[] = {name};
        for (int round = 0; round < rounds; ++round) {
            DISPID id = 0;
            wrapper->GetIDsOfNames(IID_NULL, names, 1, LOCALE_SYSTEM_DEFAULT, &id);
            VARIANT arguments[] = {ObjectVariant(wrapper)};
            DISPPARAMS parameters = {arguments, nullptr, 1, 0};
            VARIANT result;
            VariantInit(&result);
            wrapper->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &parameters, &result, nullptr,
                            nullptr);
            strangers += tracer.ObjectBehind(V_DISPATCH(&result)) == &child ? 0 : 1;
            VariantClear(&result); // wrappers come and go all the time
        }
    });
    EXPECT_EQ(strangers, 0);
    const Session session = ReadTraceFile(tracer.ItsRecorder().File());
    EXPECT_TRUE(session.warnings.empty());
    ASSERT_EQ(session.records.size(), 2U * threads * rounds);
    std::set<std::uint64_t> numbers;
    for (const Record& record : session.records) {
        EXPECT_FALSE(record.isOpen);
        numbers.insert(record.sequence);
    }
    EXPECT_EQ(numbers.size(), session.records.size());
}

TEST_F(Wrapper, IsOneForTheSameObjectOnAllThreads) {
    std::atomic<int> waiting{threads};
    std::vector<IDispatch*> wrappers(threads);
    OnAllThreads([&](int thread) {
        --waiting;
        while (waiting > 0) {
            std::this_thread::yield();
        }
        wrappers[static_cast<std::size_t>(thread)] = tracer.WrapperOf(&child, "child");
    });
    EXPECT_EQ(std::set<IDispatch*>(wrappers.begin(), wrappers.end()).size(), 1U);
    EXPECT_EQ(child.references, 2U);
    OnAllThreads([&](int thread) { wrappers[static_cast<std::size_t>(thread)]->Release(); });
}

} // namespace

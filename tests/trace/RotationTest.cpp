// A trace that outgrows its file: parts of limited size, readable in order, the middle lost and said so.
#include "tests/trace/Wrapper.h"
#include "trace/core/TraceFiles.h"

#include <gtest/gtest.h>

namespace {

using namespace kinora::trace;

constexpr std::uint64_t limit = 4096;
constexpr std::uint64_t longestLine = 600;

class Rotation : public testing::Test {
protected:
    Rotation() : tracer(RecorderSettings{folder.Path(), limit}), wrapper(tracer.WrapperOf(&target, "desktop")) {
        target.handler = [](DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) { return S_OK; };
    }
    ~Rotation() override { wrapper->Release(); }

    void Invoke() {
        DISPPARAMS none = {};
        EXPECT_EQ(wrapper->Invoke(1, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr), S_OK);
    }

    std::filesystem::path FirstPart() const { return NewestTrace(folder.Path()); }

    Session ReadAll() const {
        Session session;
        for (const std::filesystem::path& part : PartsOf(FirstPart())) {
            std::ifstream stream(part, std::ios::binary);
            ReadTrace(stream, part.u8string(), session);
        }
        return session;
    }

    const fake::TestFolder folder;
    Target target;
    Tracer tracer;
    IDispatch* wrapper;
};

TEST_F(Rotation, KeepsEverythingInUpToFourParts) {
    while (PartsOf(FirstPart()).size() < 4) {
        Invoke();
    }
    Session session = ReadAll();
    WarnOfGaps(session);
    EXPECT_TRUE(session.warnings.empty());
    EXPECT_GT(session.records.size(), 3 * limit / longestLine);
    EXPECT_EQ(session.records.back().sequence, session.records.size());
}

TEST_F(Rotation, KeepsTheFirstPartAndTheLatestThree) {
    for (int call = 0; call < 400; ++call) {
        Invoke();
    }
    const std::vector<std::filesystem::path> parts = PartsOf(FirstPart());
    ASSERT_EQ(parts.size(), 4U);
    EXPECT_EQ(parts.back(), std::filesystem::path(tracer.ItsRecorder().File()));
    for (const std::filesystem::path& part : parts) {
        EXPECT_LT(std::filesystem::file_size(part), limit + longestLine) << part;
    }
    Session session = ReadAll();
    EXPECT_TRUE(session.warnings.empty());
    EXPECT_EQ(session.records.front().sequence, 1U);
    EXPECT_EQ(session.records.back().sequence, 400U);
    WarnOfGaps(session);
    EXPECT_EQ(session.warnings.size(), 1U);
}

TEST_F(Rotation, CompletesACallThatBeganInAnEarlierPart) {
    int depth = 0;
    target.handler = [&](DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) {
        if (depth++ == 0) {
            for (int call = 0; call < 400; ++call) {
                Invoke();
            }
        }
        return S_OK;
    };
    Invoke();
    const Session session = ReadAll();
    EXPECT_TRUE(session.warnings.empty());
    EXPECT_EQ(session.records.front().sequence, 1U);
    EXPECT_FALSE(session.records.front().isOpen);
}

TEST_F(Rotation, NeverWritesOverAnotherTrace) {
    Tracer other(RecorderSettings{folder.Path(), limit});
    IDispatch* const otherWrapper = other.WrapperOf(&target, "desktop");
    Invoke();
    DISPPARAMS none = {};
    otherWrapper->Invoke(1, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr);
    EXPECT_NE(tracer.ItsRecorder().File(), other.ItsRecorder().File());
    EXPECT_EQ(ReadTraceFile(tracer.ItsRecorder().File()).records.size(), 1U);
    EXPECT_EQ(ReadTraceFile(other.ItsRecorder().File()).records.size(), 1U);
    otherWrapper->Release();
}

TEST_F(Rotation, StaysInItsFolderWhenTheClientChangesItsOwn) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::create_directories(folder / L"elsewhere");
    std::filesystem::current_path(folder.Path());
    Tracer relative(RecorderSettings{L"traces", limit});
    std::filesystem::current_path(folder / L"elsewhere");
    IDispatch* const relativeWrapper = relative.WrapperOf(&target, "desktop");
    DISPPARAMS none = {};
    relativeWrapper->Invoke(1, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr);
    relativeWrapper->Release();
    std::filesystem::current_path(before);
    EXPECT_FALSE(NewestTrace(folder / L"traces").empty());
}

TEST(RecorderSettings, ComeFromTheEnvironment) {
    SetEnvironmentVariableW(L"VANTOR_TRACE_DIR", L"C:\\traces");
    SetEnvironmentVariableW(L"VANTOR_TRACE_MAX_MB", L"5");
    EXPECT_EQ(RecorderSettings::FromEnvironment().folder, L"C:\\traces");
    EXPECT_EQ(RecorderSettings::FromEnvironment().maxBytes, 5U << 20);
    for (const wchar_t* wrong : {L"much", L"0", L""}) {
        SetEnvironmentVariableW(L"VANTOR_TRACE_MAX_MB", wrong);
        EXPECT_EQ(RecorderSettings::FromEnvironment().maxBytes, 64U << 20);
    }
    SetEnvironmentVariableW(L"VANTOR_TRACE_DIR", nullptr);
    SetEnvironmentVariableW(L"VANTOR_TRACE_MAX_MB", nullptr);
    EXPECT_FALSE(RecorderSettings::FromEnvironment().folder.empty());
}

} // namespace

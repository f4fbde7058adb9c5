// The library's whole session against the recording desktop, with and without the trace in between: the desktop sees
// the same calls, and the host the same results and files, also when calls fail.

#include "tests/fault/WholeSession.h"

#include "tests/support/Transcript.h"
#include "trace/core/Session.h"
#include "trace/server/Tracer.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <utility>

namespace {

using fake::Fault;

constexpr std::size_t callsOfASession = 443;

/// A fault of one call, counted over all objects.
struct PlannedFault {
    std::size_t call = 0;
    Fault fault;
};

/// Everything that a session shows to the desktop and to the host.
struct Seen {
    std::string transcript;
    std::size_t calls = 0;
    /// One letter per operation: whether it returned true.
    std::string outcomes;
    /// The results of every step, bit by bit.
    std::string results;
    std::string owned;
    std::map<std::string, std::string> files;
};

/// Every file in the session's folder, which is then removed.
std::map<std::string, std::string> TakeFiles() {
    namespace fs = std::filesystem;
    const fs::path folder = WholeSession::Folder().Path();
    std::map<std::string, std::string> files;
    std::vector<fs::path> entries;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            files[entry.path().lexically_relative(folder).u8string()] = fake::ReadFileBytes(entry.path().wstring());
        }
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        entries.push_back(entry.path());
    }
    for (const fs::path& entry : entries) {
        fs::remove_all(entry);
    }
    return files;
}

std::string Bits(const std::vector<IKinoraVeltrixInterface::Result>& results) {
    std::string bits(results.size() * sizeof(results[0]), '\0');
    if (!results.empty()) {
        std::memcpy(bits.data(), results.data(), bits.size());
    }
    return bits;
}

/// The trace asks for exception texts that the library does not ask for. Nothing else may look different.
void ExpectOnlyExceptionsAskedFor(fake::World& world) {
    const std::string rule = "invoked with error out-parameters";
    for (const std::string& problem : world.TakeProblems()) {
        EXPECT_NE(problem.find(rule), std::string::npos) << problem;
    }
}

Seen RunSession(const std::optional<PlannedFault>& planned, kinora::trace::Tracer* tracer) {
    WholeSession session({});
    fake::World& world = session.Desktop().world;
    double load = 0.1;
    session.Desktop().loads = [&load](const std::wstring&) { return load = -1.37 * load + 0.01; };
    IDispatch* wrapper = nullptr;
    if (tracer) {
        wrapper = tracer->WrapperOf(&session.Desktop().application, "application");
        session.Offer(wrapper);
    }
    if (planned.has_value()) {
        world.Inject(planned->call, planned->fault);
    }
    Seen seen;
    for (const Operation& operation : session.Operations()) {
        seen.outcomes += operation.run() ? 't' : 'f';
        seen.results += Bits(session.Results());
    }
    seen.transcript = world.Journal();
    seen.calls = world.Entries().size();
    world.ClearFaults();
    session.Coupling().ReleaseApplication();
    if (wrapper) {
        EXPECT_EQ(session.Owned(), "1000");
        wrapper->Release();
        EXPECT_EQ(tracer->Wrappers(), 0U);
        ExpectOnlyExceptionsAskedFor(world);
    }
    EXPECT_EQ(world.OutstandingReferences(), 0);
    seen.owned = session.Owned();
    seen.files = TakeFiles();
    return seen;
}

void ExpectSame(const Seen& traced, const Seen& plain) {
    EXPECT_TRANSCRIPT(traced.transcript, plain.transcript);
    EXPECT_EQ(traced.outcomes, plain.outcomes);
    EXPECT_TRUE(traced.results == plain.results);
    EXPECT_EQ(traced.owned, plain.owned);
    EXPECT_EQ(traced.files, plain.files);
}

class TracedSession : public testing::Test {
protected:
    TracedSession() : tracer(kinora::trace::RecorderSettings{folder.Path(), 64 << 20}) {}

    kinora::trace::Session ReadTrace() {
        std::ifstream stream(std::filesystem::path(tracer.ItsRecorder().File()), std::ios::binary);
        kinora::trace::Session session;
        kinora::trace::ReadTrace(stream, "trace", session);
        EXPECT_TRUE(session.warnings.empty());
        return session;
    }

    fake::TestFolder folder;
    kinora::trace::Tracer tracer;
};

TEST_F(TracedSession, MakesTheSameCallsAndFiles) {
    const Seen plain = RunSession({}, nullptr);
    EXPECT_EQ(plain.outcomes, "tttttttttttt");
    EXPECT_GE(plain.files.size(), 2U);
    ExpectSame(RunSession({}, &tracer), plain);
}

TEST_F(TracedSession, IsInTheTraceCallByCall) {
    const Seen seen = RunSession({}, &tracer);
    std::map<kinora::trace::Record::Kind, std::size_t> counts;
    for (const kinora::trace::Record& record : ReadTrace().records) {
        EXPECT_FALSE(record.isOpen);
        ++counts[record.kind];
    }
    EXPECT_EQ(seen.calls, callsOfASession);
    EXPECT_EQ(counts[kinora::trace::Record::Kind::Call], callsOfASession);
    EXPECT_EQ(counts[kinora::trace::Record::Kind::Lookup], callsOfASession);
}

/// The ways in which single calls fail.
const std::pair<const char*, Fault> faults[] = {
    {"name unknown", {DISP_E_UNKNOWNNAME, {}}},
    {"a failure with a result", {S_OK, fake::FailsWith(fake::Texts({L"left", L"behind"}))}},
    {"an object that is null", {S_OK, fake::NoObject()}},
    {"a mixed array", {S_OK, fake::Items({fake::Long(1), fake::Text(L"Mixed"), fake::Real(2.0)})}},
};

TEST_F(TracedSession, FailsAsItDoesWithoutTheTrace) {
    constexpr std::size_t stride = 31; // every call, in every way, is the business of the fault tests
    for (const auto& [name, fault] : faults) {
        // An answer of the wrong type to the very first call is taken as an object without a look at its type.
        for (std::size_t call = 2; call <= callsOfASession; call += stride) {
            SCOPED_TRACE(testing::Message() << "call " << call << ": " << name);
            const PlannedFault planned{call, fault};
            ExpectSame(RunSession(planned, &tracer), RunSession(planned, nullptr));
        }
    }
}

} // namespace

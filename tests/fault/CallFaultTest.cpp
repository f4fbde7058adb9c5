// Every call of a whole session fails once in every way that a call can fail.

#include "tests/fault/Sweep.h"
#include "tests/fault/WholeSession.h"

#include <windows.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <ostream>

namespace {

using fake::Entry;
using fake::Fault;

/// A call of the fault-free session.
struct CallSite {
    std::size_t operation;
    std::string operationName;
    std::string object;
    std::string method;
    std::string argument;
    /// The how many-th call of this object, method and argument within its operation, from 1.
    int occurrence;
};

std::ostream& operator<<(std::ostream& stream, const CallSite& site) {
    return stream << "operation " << site.operation << " (" << site.operationName << "), " << site.object << "."
                  << site.method << "(" << site.argument << ") #" << site.occurrence;
}

/// The ways to fail, in the order of the columns of the table below.
constexpr std::array<const char*, 8> waysToFail{"name unknown", "call fails",     "nothing",     "number",
                                                "text",         "array of texts", "mixed array", "null object"};

Fault MakeFault(std::size_t way) {
    switch (way) {
    case 0:
        return {DISP_E_UNKNOWNNAME, {}};
    case 1: // a failure that has written its result all the same, which has to be cleared
        return {S_OK, fake::FailsWith(fake::Texts({L"left", L"behind"}))};
    case 2:
        return {S_OK, fake::Nothing()};
    case 3:
        return {S_OK, fake::Long(7)};
    case 4:
        return {S_OK, fake::Text(L"text")};
    case 5:
        return {S_OK, fake::TextArray({L"a", L"b"})};
    case 6:
        return {S_OK, fake::Items({fake::Long(1), fake::Text(L"Mixed"), fake::Real(2.0)})};
    default:
        return {S_OK, fake::NoObject()};
    }
}

/// What has to come of a fault.
///   F  the operation ends at once and returns false
///   f  the operation returns false after some further calls
///   S  the operation goes on to its end and then returns false
///   T  the operation goes on and returns true
///   N  it returns true, and there is no desktop, so that the next operation fails without a call
///   -  not defined: the answer is taken as an object without a look at its type
struct Rule {
    const char* operation; // "*" any
    const char* object;    // "*" any
    const char* method;
    int occurrence; // 0 any
    const char* outcomes;
};

constexpr const char* object_ = "FFFFFFFF";  // an object is needed
constexpr const char* command = "FFTTTTTT";  // the result is not looked at
constexpr const char* harmless = "TTTTTTTT"; // the outcome does not matter, or a failed list is an empty one

const Rule rules[] = {
    {"Launch", "application", "GetAppDesktop", 0, "FFN----N"},

    {"Create", "desktop", "NewProject", 0, object_},
    {"Create", "project", "SetActiveDesign", 0, object_},
    {"Create", "editor", "GetChildNames", 0, "TTTTTTfT"}, // a mixed array names a child that is not there
    {"Create", "editor", "GetChildObject", 0, object_},
    {"Create", "design", "GetModule", 2, harmless}, // no setup is found, so one is inserted
    {"Create", "AnalysisSetup", "GetSetups", 0, harmless},
    {"Create", "editor", "FitAll", 0, harmless},

    {"Init", "design", "GetProperties", 0, "FFTTTTTT"},
    {"Init", "design", "GetModule(\"AnalysisSetup\")", 2, harmless},
    {"Init", "AnalysisSetup", "GetSetups", 1, harmless},
    {"Init", "AnalysisSetup", "GetSetups", 2, "FFFFFFTF"},
    {"Init", "design", "ChangeProperty", 0, "SSTTTTTT"},
    {"Init", "project", "GetDefinitionManager", 0, object_},
    {"Init", "*", "GetPropNames", 0, harmless}, // a material without them is plain, an object is not attached
    {"Init", "*", "GetPropValue", 0, harmless},
    {"Init", "definitions", "CloneMaterial", 0, object_}, // a boolean true is needed
    {"Init", "Materials", "GetChildNames", 0, harmless},
    {"Init", "editor", "GetChildObject", 1, harmless}, // looked at for its material only
    {"Init", "editor", "GetChildObject", 3, harmless},
    {"Init", "editor", "GetRelativeCoordinateSystems", 0, harmless},
    {"Init", "Paravant", "GetChildNames", 0, harmless},
    {"Init", "*", "GetChildNames", 0, "TTTTTTfT"},
    {"Init", "ReportSetup", "CreateReport", 0, harmless},

    {"Step", "*", "GetName", 0, "FFFFTFFF"},
    {"Step", "project", "GetPath", 0, "FFFFTFFF"},
    {"Step", "desktop", "ClearMessages", 0, harmless},
    {"Step", "design", "GetProperties", 0, "FFTTTTTT"},
    {"Step", "Paravant", "GetChildNames", 0, harmless},
    {"Step", "AnalysisSetup", "GetSetups", 0, "FFFFFFTF"},
    {"Step", "design", "Analyze", 0, object_}, // a zero of 32 bits is needed
    {"Step", "design", "GetChildObject(\"Results\")", 0, harmless},
    {"Step", "Results", "GetChildNames", 0, harmless},
    {"Step", "desktop", "GetRegistryString", 0, harmless},
    {"Step", "ReportSetup", "*", 0, harmless},

    {"Quit", "desktop", "QuitApplication", 0, harmless},

    // For all operations alike.
    {"*", "design", "SetActiveEditor", 0, object_},
    {"*", "*", "GetModule", 0, object_},
    {"*", "*", "GetChildObject", 0, object_},
    {"*", "*", "GetPropNames", 0, harmless},
    {"*", "*", "*", 0, command},
};

bool Fits(const char* pattern, const std::string& text) {
    return std::strcmp(pattern, "*") == 0 || text == pattern;
}

char ExpectedOutcome(const CallSite& site, std::size_t way) {
    for (const Rule& rule : rules) {
        const bool fitsMethod =
            Fits(rule.method, site.method) || site.method + "(" + site.argument + ")" == rule.method;
        if (Fits(rule.operation, site.operationName) && Fits(rule.object, site.object) && fitsMethod &&
            (rule.occurrence == 0 || rule.occurrence == site.occurrence)) {
            return rule.outcomes[way];
        }
    }
    return '?';
}

/// What the coupling object holds (application, desktop, project, design) after the operation of this call failed.
std::string ExpectedOwned(const CallSite& site) {
    if (site.operationName == "Launch") {
        return "1000";
    }
    if (site.operationName == "Create") {
        const std::string& method = site.method;
        if (method == "NewProject") {
            return "1100";
        }
        return method == "SaveAs" || method == "InsertDesign" || method == "SetActiveDesign" ? "1110" : "1111";
    }
    return site.operationName == "Close" ? "1110" : "1111";
}

std::vector<CallSite> RecordCalls() {
    std::vector<CallSite> sites;
    WholeSession session({});
    std::size_t number = 0;
    for (const Operation& operation : session.Operations()) {
        std::map<std::string, int> occurrences;
        session.Desktop().world.ClearJournal();
        EXPECT_TRUE(operation.run()) << operation.name;
        for (const Entry& entry : session.Desktop().world.Entries()) {
            const std::string argument = entry.arguments.empty() ? "" : Print(entry.arguments[0]);
            const int occurrence = ++occurrences[entry.object + "." + entry.method + argument];
            sites.push_back({number, operation.name, entry.object, entry.method, argument, occurrence});
        }
        ++number;
    }
    EXPECT_EQ(session.Owned(), "0000");
    return sites;
}

class CallFaults : public testing::TestWithParam<std::size_t> {
protected:
    /// Runs the session until the operation of the fault has returned. True when it returned true.
    bool RunToTheFault(WholeSession& session, const CallSite& site, const std::vector<Operation>& operations) {
        for (std::size_t operation = 0; operation < site.operation; ++operation) {
            EXPECT_TRUE(operations[operation].run());
        }
        session.Desktop().world.ClearJournal();
        return operations[site.operation].run();
    }

    void CheckFailure(WholeSession& session, const CallSite& site, char expected) {
        const std::vector<Entry>& entries = session.Desktop().world.Entries();
        const bool isLast = entries.back().object == site.object && entries.back().method == site.method;
        EXPECT_EQ(isLast, expected == 'F')
            << "the last call was " << entries.back().object << "." << entries.back().method;
        EXPECT_EQ(session.Owned(), ExpectedOwned(site));
        EXPECT_TRUE(session.HoldsNothingElse());
        EXPECT_TRUE(session.Repair());
    }

    void CheckGoingOn(WholeSession& session, const CallSite& site, const std::vector<Operation>& operations) {
        EXPECT_TRUE(session.HoldsNothingElse());
        for (std::size_t operation = site.operation + 1; operation < operations.size(); ++operation) {
            EXPECT_TRUE(operations[operation].run()) << operations[operation].name << ", which came after it";
        }
        EXPECT_EQ(session.Owned(), "0000");
    }

    void CheckWithoutDesktop(WholeSession& session, const std::vector<Operation>& operations) {
        EXPECT_EQ(session.Owned(), "1000");
        session.Desktop().world.ClearJournal();
        EXPECT_FALSE(operations[1].run());
        EXPECT_TRUE(session.Desktop().world.Entries().empty());
        EXPECT_TRUE(session.Repair());
    }

    void Check(std::size_t callNumber, const CallSite& site, std::size_t way, char expected) {
        WholeSession session({});
        session.Desktop().world.Inject(callNumber, MakeFault(way));
        const std::vector<Operation> operations = session.Operations();
        const bool succeeded = RunToTheFault(session, site, operations);
        EXPECT_TRUE(session.Desktop().world.FaultHit());
        EXPECT_EQ(succeeded, expected == 'T' || expected == 'N');
        if (expected == 'N') {
            CheckWithoutDesktop(session, operations);
        } else if (!succeeded) {
            CheckFailure(session, site, expected);
        } else {
            CheckGoingOn(session, site, operations);
        }
        EXPECT_EQ(session.Desktop().world.OutstandingReferences(), 0);
    }
};

TEST_P(CallFaults, EndTheOperationOrDoNotMatterAndLeakNothing) {
    constexpr std::size_t enough = 10; // complaints to read
    const std::size_t way = GetParam();
    const std::vector<CallSite> sites = RecordCalls();
    ASSERT_GT(sites.size(), 300U);
    std::size_t injected = 0;
    std::size_t held = 0;
    // Each way begins at another call, so that all ways together take every call.
    const std::size_t first = 1 + way % sweep::Stride();
    for (std::size_t number = first; number <= sites.size() && injected - held < enough; number += sweep::Stride()) {
        const CallSite& site = sites[number - 1];
        const char expected = ExpectedOutcome(site, way);
        if (expected == '-') {
            continue;
        }
        SCOPED_TRACE(testing::Message() << "call " << number << ", " << site << ": " << waysToFail[way]);
        const int before = sweep::Complaints();
        Check(number, site, way, expected);
        ++injected;
        held += sweep::Complaints() == before ? 1U : 0U;
    }
    std::printf("%-14s: %zu faults injected, %zu held\n", waysToFail[way], injected, held);
    RecordProperty("injected", std::to_string(injected));
    RecordProperty("held", std::to_string(held));
}

INSTANTIATE_TEST_SUITE_P(All, CallFaults, testing::Range<std::size_t>(0, waysToFail.size()));

} // namespace

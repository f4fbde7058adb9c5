// What a handler of the host may do with other coupling objects while a call of one is out.

#include "tests/support/CouplingSession.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

using fake::Entry;
using Result = IKinoraVeltrixInterface::Result;
using Severity = IKinoraVeltrixInterface::MessageSeverity;

/// A session with an open project and a step to disturb.
class DuringTheSolve : public testing::Test, protected fake::CouplingSession {
protected:
    void SetUp() override {
        Create();
        fake.variables = {L"SimTime"};
        fake.setups = {L"Setup1"};
    }
    /// Runs a step, and something in the middle of its solve.
    void Step(const std::function<void()>& meanwhile) {
        std::size_t turns = 0;
        fake.world.observer = [&](const Entry& entry) {
            if (entry.object == "design" && entry.method == "Analyze" && turns++ == 0) {
                meanwhile();
            }
        };
        std::vector<Result> results;
        int status = 0;
        EXPECT_TRUE(coupling.Analyze(0.0, {}, results, status));
        EXPECT_EQ(turns, 1U);
        fake.world.observer = nullptr;
    }
    static bool Asks(CKinoraVeltrixCoupling& other) {
        std::vector<std::string> messages;
        return other.GetMessages(messages, Severity::Info);
    }
};

TEST_F(DuringTheSolve, AnotherObjectIsFree) {
    CKinoraVeltrixCoupling other;
    Step([&] {
        EXPECT_TRUE(other.CreateProject("other.vtdk", "other.obj", "mm"));
        EXPECT_TRUE(Asks(other));
        EXPECT_FALSE(Asks(coupling));
    });
    EXPECT_TRUE(Asks(coupling));
    EXPECT_TRUE(other.ReleaseApplication());
}

TEST_F(DuringTheSolve, CopyIsFreeAndAnAssignmentOccupiesNothing) {
    Step([&] {
        CKinoraVeltrixCoupling copy(coupling);
        EXPECT_TRUE(Asks(copy));
        CKinoraVeltrixCoupling assigned;
        assigned = coupling;
        EXPECT_TRUE(Asks(assigned));
        coupling = assigned;
        EXPECT_FALSE(Asks(coupling)) << "its own operation is still under way";
    });
    EXPECT_TRUE(Asks(coupling));
}

TEST_F(DuringTheSolve, WhatACopyLetsGoOfStaysUntilTheStepsEnd) {
    Step([&] {
        CKinoraVeltrixCoupling copy(coupling);
        EXPECT_TRUE(copy.CloseProject());
    });
    // The two shared one reference on each, and the copy has used it up.
    fake.project.AddRef();
    fake.design.AddRef();
}

} // namespace

// A desktop object may live in the host's own process, and may be written in C++. When one of its methods throws, the
// exception passes through the library like any other: what was on its way is freed, and the session can be repaired.

#include "tests/fault/Sweep.h"
#include "tests/fault/WholeSession.h"

#include <cstdio>
#include <gtest/gtest.h>

namespace {

/// What the desktop throws.
struct Complaint {};

/// What came of the exception.
enum class Arrival {
    AtTheCaller,
    /// A warning to the desktop's user: the step had been solved.
    AsWarning,
    /// A launch failure.
    AsLaunchExeption,
    Nowhere
};

Arrival Run(WholeSession& session, const Operation& operation) {
    try {
        const bool succeeded = operation.run();
        const bool hasWarned = session.Desktop().world.Count("AddMessage") > 0;
        return succeeded && hasWarned && operation.name == "Step" ? Arrival::AsWarning : Arrival::Nowhere;
    } catch (const Complaint&) {
        return Arrival::AtTheCaller;
    } catch (const LaunchDesktopExeption&) {
        return operation.name == "Launch" ? Arrival::AsLaunchExeption : Arrival::Nowhere;
    }
}

std::size_t CountCalls() {
    WholeSession session({});
    for (const Operation& operation : session.Operations()) {
        EXPECT_TRUE(operation.run()) << operation.name;
    }
    return session.Desktop().world.CallNumber();
}

/// Runs a session whose n-th call throws.
Arrival ThrowAt(std::size_t number) {
    WholeSession session({});
    fake::World& world = session.Desktop().world;
    bool hasThrown = false;
    world.observer = [&world, &hasThrown, number](const fake::Entry&) {
        if (world.CallNumber() == number) {
            hasThrown = true;
            throw Complaint();
        }
    };
    Arrival arrival = Arrival::Nowhere;
    for (const Operation& operation : session.Operations()) {
        arrival = Run(session, operation);
        if (hasThrown) {
            break;
        }
    }
    EXPECT_TRUE(session.HoldsNothingElse());
    EXPECT_TRUE(session.Repair());
    EXPECT_EQ(world.OutstandingReferences(), 0);
    return arrival;
}

TEST(ThrowingDesktop, ExceptionsOfEveryCallPassThroughAndLeakNothing) {
    const std::size_t calls = CountCalls();
    ASSERT_GT(calls, 300U);
    std::size_t passed = 0;
    std::size_t injected = 0;
    for (std::size_t number = 1; number <= calls && !HasFailure(); number += sweep::Stride()) {
        SCOPED_TRACE(testing::Message() << "call " << number);
        const Arrival arrival = ThrowAt(number);
        EXPECT_NE(arrival, Arrival::Nowhere);
        passed += arrival == Arrival::AtTheCaller ? 1U : 0U;
        ++injected;
    }
    const std::size_t held = HasFailure() ? injected - 1 : injected;
    std::printf("%-14s: %zu faults injected, %zu held: %zu passed through, the others were answered\n", "throws",
                injected, held, passed);
    RecordProperty("injected", std::to_string(injected));
    RecordProperty("held", std::to_string(held));
}

} // namespace

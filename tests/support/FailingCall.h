#pragma once

#include "tests/support/FakeDesktop.h"

#include <string>

namespace fake {

/// One row of a table of failures: which call of a method fails, how, and where the journal then ends.
struct FailingCall {
    const char* name;
    Object& (*object)(FakeDesktop&);
    const char* method;
    unsigned call;
    Answer answer;
    const char* last;

    void Plan(FakeDesktop& fake) const { object(fake).OnCall(method, call, answer); }
    /// For INSTANTIATE_TEST_SUITE_P.
    template <typename Info>
    static std::string NameOf(const Info& info) {
        return info.param.name;
    }
};

/// @name Objects of the desktop, for such tables
/// @{
inline Object& Project(FakeDesktop& fake) {
    return fake.project;
}
inline Object& Design(FakeDesktop& fake) {
    return fake.design;
}
inline Object& Editor(FakeDesktop& fake) {
    return fake.editor;
}
inline Object& Setups(FakeDesktop& fake) {
    return fake.setupModule;
}
inline Object& Outputs(FakeDesktop& fake) {
    return fake.outputModule;
}
inline Object& Fields(FakeDesktop& fake) {
    return fake.fieldsModule;
}
inline Object& Parameters(FakeDesktop& fake) {
    return fake.parameterModule;
}
inline Object& Paravant(FakeDesktop& fake) {
    return fake.paravant;
}
/// @}

} // namespace fake

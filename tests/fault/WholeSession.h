#pragma once

#include "tests/fault/SessionDesktop.h"

#include <functional>

/// One operation of a session.
struct Operation {
    std::string name;
    std::function<bool()> run;
};

/// A whole coupled run against the fake desktop: launch, project, geometry, three bodies, steps with and without
/// reports, save, close, quit.
class WholeSession : public SessionDesktop {
public:
    explicit WholeSession(const Size& size);
    ~WholeSession();

    /// The operations in their order.
    std::vector<Operation> Operations();

    /// Lets go of everything, launches a new desktop and runs a short session. True when all of it succeeded.
    bool Repair();

    CKinoraVeltrixCoupling& Coupling() { return *m_coupling; }
    /// What the last step returned.
    const std::vector<IKinoraVeltrixInterface::Result>& Results() const { return m_results; }
    /// Frees the memory of the results that were returned.
    void ForgetResults() { std::vector<IKinoraVeltrixInterface::Result>().swap(m_results); }
    /// Destroys the coupling object after letting go of everything.
    void End();

private:
    bool Step(int number);

    std::unique_ptr<CKinoraVeltrixCoupling> m_coupling;
    std::vector<IKinoraVeltrixInterface::Result> m_results;
    int m_status = 0;
};

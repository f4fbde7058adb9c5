#pragma once

#include "coupling/KinoraVeltrixCoupling.h"
#include "tests/support/FakeDesktop.h"
#include "tests/support/Registration.h"
#include "tests/support/TestFolder.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

/// One operation of a session.
struct Operation {
    std::string name;
    std::function<bool()> run;
};

/// A whole coupled run against the fake desktop: launch, project, geometry, three bodies (a magnet that needs a clone
/// of its material, a magnet that keeps it, a soft body without coercivity), steps with and without reports, save,
/// close, quit. Every session starts with a desktop of its own; the registered class and the folder are shared, because
/// the registry is slow.
class WholeSession {
public:
    struct Size {
        int steps = 6;
        /// Steps that write reports; the desktop's option is "Never" for the others.
        int stepsWithReports = 2;
        int bodies = 3;
    };

    explicit WholeSession(const Size& size);
    ~WholeSession();
    WholeSession(const WholeSession&) = delete;
    WholeSession& operator=(const WholeSession&) = delete;

    /// The operations in their order.
    std::vector<Operation> Operations();

    /// A new desktop, as after a restart. The one before stays alive until the session ends.
    void RestartDesktop();
    /// Lets go of everything, launches a new desktop and runs a short session. True when all of it succeeded.
    bool Repair();

    /// What the next launch gives in place of the desktop's application object.
    void Offer(IDispatch* application);

    fake::FakeDesktop& Desktop() { return *m_desktops.back(); }
    CKinoraVeltrixCoupling& Coupling() { return *m_coupling; }
    /// References that the coupling object holds on application, desktop, project and design, as four digits.
    std::string Owned();
    /// True when no object but these four has a reference.
    bool HoldsNothingElse();
    /// What the last step returned.
    const std::vector<IKinoraVeltrixInterface::Result>& Results() const { return m_results; }
    /// Frees the memory of the results that were returned.
    void ForgetResults() { std::vector<IKinoraVeltrixInterface::Result>().swap(m_results); }
    /// Destroys the coupling object after letting go of everything.
    void End();

    static const fake::TestFolder& Folder();

private:
    struct Shared;
    static Shared& SharedParts();

    bool Step(int number);
    void MakeInputs();

    Size m_size;
    /// Made before the session, so that an operation allocates nothing but what the library allocates.
    std::vector<IKinoraVeltrixInterface::Group> m_groups;
    std::map<std::string, IKinoraVeltrixInterface::Material> m_materials;
    std::vector<std::vector<IKinoraVeltrixInterface::Transform>> m_poses;
    std::vector<std::unique_ptr<fake::FakeDesktop>> m_desktops;
    std::unique_ptr<CKinoraVeltrixCoupling> m_coupling;
    std::vector<IKinoraVeltrixInterface::Result> m_results;
    int m_status = 0;
};

#pragma once

#include "coupling/KinoraVeltrixCoupling.h"
#include "tests/support/FakeDesktop.h"
#include "tests/support/Registration.h"
#include "tests/support/TestFolder.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

/// The fake desktops of a whole coupled run, one after the other, and what the run hands over: three bodies (a magnet
/// that needs a clone of its material, a magnet that keeps it, a soft body without coercivity) and their poses. Every
/// run starts with a desktop of its own; the registered class and the folder are shared, because the registry is slow.
class SessionDesktop {
public:
    struct Size {
        int steps = 6;
        /// Steps that write reports; the desktop's option is "Never" for the others.
        int stepsWithReports = 2;
        int bodies = 3;
    };

    explicit SessionDesktop(const Size& size);
    SessionDesktop(const SessionDesktop&) = delete;
    SessionDesktop& operator=(const SessionDesktop&) = delete;

    /// A new desktop, as after a restart. The one before stays alive until the session ends.
    void RestartDesktop();
    /// What the next launch gives in place of the desktop's application object.
    void Offer(IDispatch* application);

    fake::FakeDesktop& Desktop() { return *m_desktops.back(); }
    /// References that are held on application, desktop, project and design, as four digits.
    std::string Owned();
    /// True when no object but these four has a reference.
    bool HoldsNothingElse();

    static const fake::TestFolder& Folder();

protected:
    ~SessionDesktop() = default;

    /// Has the desktop want reports in the run's first steps only.
    void WantReportsAt(int step) { Desktop().updateReports = step < m_size.stepsWithReports ? L"" : L"Never"; }

    Size m_size;
    /// Made before the session, so that an operation allocates nothing but what the library allocates.
    std::vector<IKinoraVeltrixInterface::Group> m_groups;
    std::map<std::string, IKinoraVeltrixInterface::Material> m_materials;
    std::vector<std::vector<IKinoraVeltrixInterface::Transform>> m_poses;

private:
    struct Shared;
    static Shared& SharedParts();

    void MakeInputs();

    std::vector<std::unique_ptr<fake::FakeDesktop>> m_desktops;
};

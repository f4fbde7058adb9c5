#pragma once

#include "coupling/KinoraVeltrixCoupling.h"
#include "tests/support/FakeDesktop.h"
#include "tests/support/Registration.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Texts.h"

#include <objbase.h>

#include <gtest/gtest.h>
#include <string>

namespace fake {

/// COM for the running test's thread.
class Apartment {
public:
    Apartment() { CoInitialize(nullptr); }
    ~Apartment() { CoUninitialize(); }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
};

/// A coupling object that launches the fake desktop, through COM and the registry as any other desktop.
///
/// What the coupling object still holds at the end is released by `ReleaseApplication`; whatever is left then is a leak
/// and fails the test.
class CouplingSession {
public:
    CouplingSession() : version(Registration::UniqueVersion().c_str()), registration(Registration::UniqueProgId()) {
        registration.Create(&fake.application);
        fake.projectFolder = folder.PathWithSeparator();
    }
    ~CouplingSession() {
        fake.world.ClearFaults();
        if (fake.application.References() > 0) {
            coupling.ReleaseApplication();
        }
    }
    CouplingSession(const CouplingSession&) = delete;
    CouplingSession& operator=(const CouplingSession&) = delete;

    void Launch() {
        ASSERT_TRUE(coupling.LaunchDesktop());
        fake.world.ClearJournal();
    }
    /// A project with an active design, and an empty journal.
    void Create() {
        ASSERT_TRUE(coupling.CreateProject("magnets.vtdk", "magnets.obj", "mm"));
        fake.world.ClearJournal();
    }

    FakeDesktop fake;
    TestFolder folder;
    VersionVariable version;
    Registration registration;
    Apartment apartment;
    CKinoraVeltrixCoupling coupling;
};

} // namespace fake

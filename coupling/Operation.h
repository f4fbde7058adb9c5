#pragma once

#include "coupling/KinoraVeltrixCoupling.h"
#include "coupling/Reference.h"

/// A public operation of a coupling object under way.
///
/// While a call to the desktop is out, COM hands messages and incoming calls to the host, whose code may ask the same
/// object for something. Such an operation finds the object occupied, answers false and touches nothing.
class CKinoraVeltrixCoupling::Operation {
public:
    explicit Operation(const CKinoraVeltrixCoupling& coupling)
        : m_occupation(coupling.m_occupation), m_hasBegun(!m_occupation.isOccupied) {
        m_occupation.isOccupied = true;
    }
    ~Operation() {
        if (m_hasBegun) {
            m_occupation.isOccupied = false;
        }
    }
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

    /// @return false when the object is in the middle of another one
    bool HasBegun() const { return m_hasBegun; }

private:
    Occupation& m_occupation;
    const bool m_hasBegun;
};

/// An operation that keeps what it works with until its end, whatever happens while a call is out: a copy of the
/// coupling object shares the pointers without counting, and may let go of them.
class CKinoraVeltrixCoupling::HoldingOperation : public Operation {
public:
    explicit HoldingOperation(const CKinoraVeltrixCoupling& coupling) : Operation(coupling) {
        if (HasBegun()) {
            m_desktop = SharedReference(coupling.m_pDesktop);
            m_project = SharedReference(coupling.m_pProject);
            m_design = SharedReference(coupling.m_pDesign);
        }
    }

private:
    CObject m_desktop;
    CObject m_project;
    CObject m_design;
};

/// The part of an operation that uses others through the virtual functions: they are not asked for from outside.
class CKinoraVeltrixCoupling::OwnCalls {
public:
    explicit OwnCalls(const CKinoraVeltrixCoupling& coupling) : m_occupation(coupling.m_occupation) {
        m_occupation.isOccupied = false;
    }
    ~OwnCalls() { m_occupation.isOccupied = true; }
    OwnCalls(const OwnCalls&) = delete;
    OwnCalls& operator=(const OwnCalls&) = delete;

private:
    Occupation& m_occupation;
};

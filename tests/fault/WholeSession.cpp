#include "tests/fault/WholeSession.h"

#include <objbase.h>

WholeSession::WholeSession(const Size& size)
    : SessionDesktop(size), m_coupling(std::make_unique<CKinoraVeltrixCoupling>()) {
    CoInitialize(nullptr);
}

WholeSession::~WholeSession() {
    End();
    CoUninitialize();
}

void WholeSession::End() {
    Desktop().world.ClearFaults();
    if (m_coupling && Desktop().application.References() > 0) {
        m_coupling->ReleaseApplication();
    }
    m_coupling.reset();
}

std::vector<Operation> WholeSession::Operations() {
    std::vector<Operation> operations{
        {"Launch", [this] { return m_coupling->LaunchDesktop(); }},
        {"Create", [this] { return m_coupling->CreateProject("Magnets.vtdk", "magnets.obj", "mm"); }},
        {"Init", [this] { return m_coupling->InitMagneticObjects(m_groups, m_materials); }},
    };
    for (int step = 0; step < m_size.steps; ++step) {
        operations.push_back({"Step", [this, step] { return Step(step); }});
    }
    operations.push_back({"Save", [this] { return m_coupling->SaveProject(); }});
    operations.push_back({"Close", [this] { return m_coupling->CloseProject(); }});
    operations.push_back({"Quit", [this] { return m_coupling->QuitApplication(); }});
    return operations;
}

bool WholeSession::Step(int number) {
    WantReportsAt(number);
    return m_coupling->Analyze(0.1 * number, m_poses[static_cast<std::size_t>(number)], m_results, m_status);
}

bool WholeSession::Repair() {
    if (Desktop().application.References() > 0) {
        m_coupling->ReleaseApplication();
    }
    RestartDesktop();
    Desktop().updateReports = L"Never";
    return m_coupling->LaunchDesktop() && m_coupling->CreateProject("Magnets.vtdk", "magnets.obj", "mm") &&
           m_coupling->InitMagneticObjects(m_groups, m_materials) &&
           m_coupling->Analyze(0.0, m_poses[0], m_results, m_status) && m_coupling->QuitApplication();
}

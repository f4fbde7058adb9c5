#include "simulator/automation/Registration.h"

#include "programs/ProgramFile.h"

namespace vantor::automation {
namespace {

using namespace kinora::programs;

ClassEntry ProgramEntry(bool withDefault) {
    ClassEntry entry;
    entry.classId = simulatorClassId;
    entry.title = L"Simulator of the QUORIX Vantor Desktop";
    entry.progIds = {simulatorProgId};
    if (withDefault) {
        entry.progIds.push_back(desktopProgId);
    }
    entry.serverKey = L"LocalServer32";
    entry.server = L"\"" + ProgramFile().wstring() + L"\"";
    return entry;
}

std::filesystem::path InProcessFile() {
    return ProgramFile().parent_path() / L"vantor-sim-inprocess.dll";
}

ClassEntry InProcessEntry() {
    ClassEntry entry;
    entry.classId = inProcessClassId;
    entry.title = L"Simulator of the QUORIX Vantor Desktop in its client's process";
    entry.progIds = {inProcessProgId};
    entry.serverKey = L"InprocServer32";
    entry.server = InProcessFile().wstring();
    entry.threadingModel = L"Both";
    return entry;
}

RegistrationResult RegisterProgram(bool alsoDefault) {
    const bool withDefault = alsoDefault && !IsTaken(desktopProgId, simulatorClassId);
    RegistrationResult result = WriteRegistration(ProgramEntry(withDefault));
    if (alsoDefault && !withDefault) {
        result.text =
            L"Another program holds " + std::wstring(desktopProgId) + L": it is left as it is.\n" + result.text;
    }
    return result;
}

RegistrationResult RegisterInProcess() {
    const std::filesystem::path server = InProcessFile();
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(server, ignored)) {
        return {false, std::wstring(inProcessProgId) + L" is not registered: " + server.wstring() +
                           L" is missing; it must lie beside this program.\n"};
    }
    return WriteRegistration(InProcessEntry());
}

/// What both did.
RegistrationResult Together(const RegistrationResult& program, const RegistrationResult& inProcess) {
    return {program.succeeded && inProcess.succeeded, program.text + inProcess.text};
}

} // namespace

RegistrationResult RegisterServer(bool alsoDefault) {
    const RegistrationResult program = RegisterProgram(alsoDefault);
    return Together(program, RegisterInProcess());
}

RegistrationResult UnregisterServer() {
    const RegistrationResult program = RemoveRegistration(ProgramEntry(true));
    return Together(program, RemoveRegistration(InProcessEntry()));
}

} // namespace vantor::automation

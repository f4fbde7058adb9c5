#include "simulator/automation/Registration.h"

#include "programs/ProgramFile.h"
#include "simulator/automation/ClassFactory.h"

namespace vantor::automation {
namespace {

using namespace kinora::programs;

ClassEntry Entry(bool withDefault) {
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

} // namespace

RegistrationResult RegisterServer(bool alsoDefault) {
    const bool withDefault = alsoDefault && !IsTaken(desktopProgId, simulatorClassId);
    RegistrationResult result = WriteRegistration(Entry(withDefault));
    if (alsoDefault && !withDefault) {
        result.text =
            L"Another program holds " + std::wstring(desktopProgId) + L": it is left as it is.\n" + result.text;
    }
    return result;
}

RegistrationResult UnregisterServer() {
    return RemoveRegistration(Entry(true));
}

} // namespace vantor::automation

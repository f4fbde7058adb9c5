#include "trace/app/Registration.h"

#include "programs/ProgramFile.h"
#include "trace/server/ClassId.h"

#include <filesystem>

namespace kinora::trace {
namespace {

std::filesystem::path ServerFile() {
    return programs::ProgramFile().parent_path() / L"vantor-trace-server.dll";
}

programs::ClassEntry Entry() {
    programs::ClassEntry entry;
    entry.classId = traceClassId;
    entry.title = L"Trace of the QUORIX Vantor Desktop";
    entry.progIds = {traceProgId};
    entry.serverKey = L"InprocServer32";
    entry.server = ServerFile().wstring();
    entry.threadingModel = L"Both";
    return entry;
}

} // namespace

RegistrationResult RegisterServer() {
    const std::filesystem::path server = ServerFile();
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(server, ignored)) {
        return {false, server.wstring() + L" is missing: it must lie beside this program.\n"};
    }
    RegistrationResult result = programs::WriteRegistration(Entry());
    if (result.succeeded) {
        result.text += L"Next: set KINORA_VELTRIX_VTDK_VERSION=Trace\n"
                       L"and, to trace the simulator: set VANTOR_TRACE_TARGET=Simulator\n";
    }
    return result;
}

RegistrationResult UnregisterServer() {
    return programs::RemoveRegistration(Entry());
}

} // namespace kinora::trace

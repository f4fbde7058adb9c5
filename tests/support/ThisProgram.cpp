#include "tests/support/ThisProgram.h"

#include "programs/ProgramFile.h"
#include "tests/support/Texts.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace fake {

std::wstring ThisProgram() {
    return OfPath(kinora::programs::ProgramFile());
}

std::wstring BesideThisProgram(const std::wstring& name) {
    return OfPath(kinora::programs::ProgramFile().parent_path() / ToPath(name));
}

unsigned long ThisProcess() {
#ifdef _WIN32
    return GetCurrentProcessId();
#else
    return static_cast<unsigned long>(getpid());
#endif
}

} // namespace fake

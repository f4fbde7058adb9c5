#include "programs/OwnConsole.h"

#ifdef _WIN32
#include "programs/Environment.h"
#include "programs/Print.h"

#include <windows.h>

#include <atomic>
#include <conio.h>
#endif

namespace kinora::programs {

#ifdef _WIN32

namespace {

std::atomic<bool> isKeyExpected{true};

bool AreStreamsItsConsole() {
    DWORD mode = 0;
    for (const DWORD stream : {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
        if (GetConsoleMode(GetStdHandle(stream), &mode) == FALSE) {
            return false;
        }
    }
    return true;
}

/// Not for a service or a scheduled task without a user, and not for a program that was started hidden.
bool IsVisible() {
    USEROBJECTFLAGS flags = {};
    if (GetUserObjectInformationW(GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof(flags), nullptr) == FALSE ||
        (flags.dwFlags & WSF_VISIBLE) == 0) {
        return false;
    }
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    GetStartupInfoW(&startup);
    const bool isHidden = (startup.dwFlags & STARTF_USESHOWWINDOW) != 0 && startup.wShowWindow == SW_HIDE;
    return !isHidden && GetConsoleWindow() != nullptr;
}

/// While nothing but a key is waited for, a console closes at once.
BOOL WINAPI OnConsoleEvent(DWORD event) {
    return event == CTRL_CLOSE_EVENT || event == CTRL_LOGOFF_EVENT || event == CTRL_SHUTDOWN_EVENT ? TRUE : FALSE;
}

} // namespace

bool HasConsoleForItself() {
    // Wine takes a terminal for a console of the program alone, whatever shell is there.
    DWORD process = 0;
    return !IsWine() && GetConsoleProcessList(&process, 1) == 1 && AreStreamsItsConsole() && IsVisible();
}

void WaitForKey() {
    SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
    if (isKeyExpected) {
        Print(stdout, "\nPress any key to close this window.");
        while (_kbhit() != 0) { // pressed before
            _getwch();
        }
        _getwch();
    }
}

void ExpectNoKey() {
    isKeyExpected = false;
}

#else

bool HasConsoleForItself() {
    return false;
}

void WaitForKey() {}

void ExpectNoKey() {}

#endif

} // namespace kinora::programs

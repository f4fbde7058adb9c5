#include "host/app/Terminal.h"

#ifdef _WIN32
#include "programs/OwnConsole.h"

#include <windows.h>
#else
#include <csignal>
#include <sys/ioctl.h>
#include <unistd.h>
#endif

#include <atomic>

namespace kinora::host {
namespace {

std::atomic<bool> interrupted{false};

#ifdef _WIN32
BOOL WINAPI OnConsoleEvent(DWORD event) {
    switch (event) {
    case CTRL_C_EVENT:
    case CTRL_BREAK_EVENT:
        // The first one is answered by the run itself, the second by the system.
        return interrupted.exchange(true) ? FALSE : TRUE;
    case CTRL_CLOSE_EVENT:
    case CTRL_LOGOFF_EVENT:
    case CTRL_SHUTDOWN_EVENT:
        interrupted = true;
        programs::ExpectNoKey();
        // The system ends the program when this returns, and after five seconds anyway. The program's own end comes
        // before, when the step is done in time.
        Sleep(4500);
        return TRUE;
    default:
        return FALSE;
    }
}
#else
constexpr int requests[] = {SIGINT, SIGTERM};

void OnSignal(int) {
    // The first one is answered by the run itself, the second by the system.
    interrupted = true;
    for (const int request : requests) {
        std::signal(request, SIG_DFL);
    }
}
#endif

} // namespace

#ifdef _WIN32

int TerminalWidth() {
    HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    DWORD mode = 0;
    if (!GetConsoleMode(output, &mode) || !GetConsoleScreenBufferInfo(output, &info)) {
        return 0;
    }
    return info.srWindow.Right - info.srWindow.Left + 1;
}

void CatchInterrupts() {
    SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
}

#else

int TerminalWidth() {
    struct winsize size = {};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

void CatchInterrupts() {
    for (const int request : requests) {
        struct sigaction action = {};
        if (sigaction(request, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) {
            continue;
        }
        action = {};
        action.sa_handler = OnSignal;
        action.sa_flags = SA_RESTART; // what the run is writing is written whole
        sigaction(request, &action, nullptr);
    }
}

#endif

bool IsInterrupted() {
    return interrupted;
}

} // namespace kinora::host

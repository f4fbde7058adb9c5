#include "host/app/Terminal.h"

#include <atomic>

#ifdef _WIN32
#include <windows.h>
#else
#include <csignal>
#include <sys/ioctl.h>
#include <unistd.h>
#endif

namespace kinora::host {
namespace {

std::atomic<bool> interrupted{false};

#ifdef _WIN32
BOOL WINAPI OnConsoleEvent(DWORD event) {
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        return FALSE;
    }
    // The first one is answered by the run itself, the second by the system.
    return interrupted.exchange(true) ? FALSE : TRUE;
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
    return info.srWindow.Right - info.srWindow.Left;
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

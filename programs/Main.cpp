#include "programs/Main.h"

#include "programs/Errors.h"
#include "programs/OwnConsole.h"
#include "programs/Print.h"

#ifdef _WIN32
#include "programs/StrayQuotes.h"
#include "programs/Utf.h"
#endif

namespace kinora::programs {
namespace {

#ifdef _WIN32
std::string Utf8(const wchar_t* argument) {
    return Utf8FromWide(argument);
}
#else
std::string Utf8(const char* argument) {
    return argument;
}

/// The shell's quotes are gone, and one that is left is meant.
std::vector<std::string> WithoutStrayQuotes(std::vector<std::string> words) {
    return words;
}
#endif

std::vector<std::string> Words(int count, const MainArgument* values) {
    std::vector<std::string> words;
    for (int i = 1; i < count; ++i) {
        words.push_back(Utf8(values[i]));
    }
    return WithoutStrayQuotes(std::move(words));
}

/// A double click gives no argument, a file that is dropped on the program one.
bool IsStartedByClick(int count) {
    return count <= 2 && HasConsoleForItself();
}

/// What a user sees who starts the program as one with windows.
std::vector<std::string> AskForHelp() {
    Print(stdout,
          "This program belongs in a console: open one (Terminal, or cmd) and start it there with what it is to "
          "do.\nA file that it can do without further options is also dropped on it in Explorer.\n\n");
    return {"--help"};
}

void PrintError(const std::string& text) {
    Print(stderr, "error: " + text + "\n");
}

} // namespace

int RunMain(int count, const MainArgument* values, const std::string& work,
            const std::function<ExitStatus(std::vector<std::string>)>& body) {
    ExitStatus status = ExitStatus::Failed;
    try {
        std::vector<std::string> words = Words(count, values);
        status = body(words.empty() && IsStartedByClick(count) ? AskForHelp() : std::move(words));
    } catch (const ProgramError& error) {
        PrintError(error.what());
        status = error.Status();
    } catch (const std::exception& error) {
        PrintError(work + " failed unexpectedly: " + error.what());
    } catch (...) {
        // The platform's own error type, raised when memory for a text is lacking.
        PrintError(work + " failed unexpectedly; is the system out of memory?");
    }
    if (IsStartedByClick(count)) {
        WaitForKey();
    }
    return static_cast<int>(status);
}

} // namespace kinora::programs

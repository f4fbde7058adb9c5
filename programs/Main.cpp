#include "programs/Main.h"

#include "programs/Errors.h"

#ifdef _WIN32
#include "programs/Utf.h"

#include <windows.h>
#endif

namespace kinora::programs {
namespace {

#ifdef _WIN32
void ShowUtf8() {
    SetConsoleOutputCP(CP_UTF8);
}

std::string Utf8(const wchar_t* argument) {
    return Utf8FromWide(argument);
}
#else
void ShowUtf8() {}

std::string Utf8(const char* argument) {
    return argument;
}
#endif

void PrintError(const std::string& text) {
    Print(stderr, "error: " + text + "\n");
}

} // namespace

bool Print(std::FILE* stream, const std::string& text) {
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), stream) == text.size();
    return std::fflush(stream) == 0 && isWritten;
}

int RunMain(int count, const MainArgument* values, const std::string& work,
            const std::function<ExitStatus(std::vector<std::string>)>& body) {
    ShowUtf8();
    ExitStatus status = ExitStatus::Failed;
    try {
        std::vector<std::string> words;
        for (int i = 1; i < count; ++i) {
            words.push_back(Utf8(values[i]));
        }
        status = body(std::move(words));
    } catch (const ProgramError& error) {
        PrintError(error.what());
        status = error.Status();
    } catch (const std::exception& error) {
        PrintError(work + " failed unexpectedly: " + error.what());
    } catch (...) {
        // The platform's own error type, raised when memory for a text is lacking.
        PrintError(work + " failed unexpectedly; is the system out of memory?");
    }
    return static_cast<int>(status);
}

} // namespace kinora::programs

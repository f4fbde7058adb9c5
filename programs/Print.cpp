#include "programs/Print.h"

#include "programs/Environment.h"

#ifdef _WIN32
#include "programs/Utf.h"

#include <windows.h>

#include <algorithm>
#include <io.h>
#include <optional>
#else
#include <unistd.h>
#endif

namespace kinora::programs {
namespace {

bool WriteBytes(std::FILE* stream, const std::string& text) {
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), stream) == text.size();
    return std::fflush(stream) == 0 && isWritten;
}

#ifdef _WIN32

/// The console behind a stream; null when it is none.
HANDLE ConsoleOf(std::FILE* stream) {
    const int file = _fileno(stream);
    if (file < 0) {
        return nullptr;
    }
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the run-time library gives handles as numbers
    HANDLE handle = reinterpret_cast<HANDLE>(_get_osfhandle(file));
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != FALSE ? handle : nullptr;
}

/// Has a console obey escape sequences, as long as it lives. No longer: a console is shared with the shell, and goes on
/// when the program has ended, however that was.
class EscapeSequences {
public:
    explicit EscapeSequences(HANDLE console) : m_console(console) {
        constexpr DWORD wanted = ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING;
        m_areObeyed =
            GetConsoleMode(console, &m_before) != FALSE && SetConsoleMode(console, m_before | wanted) != FALSE;
    }
    ~EscapeSequences() {
        if (m_areObeyed) {
            SetConsoleMode(m_console, m_before);
        }
    }
    EscapeSequences(const EscapeSequences&) = delete;
    EscapeSequences& operator=(const EscapeSequences&) = delete;

    bool AreObeyed() const { return m_areObeyed; }

private:
    HANDLE m_console;
    DWORD m_before = 0;
    bool m_areObeyed = false;
};

/// A console's lines end with both characters, lest its mode has the next one begin below the end.
std::wstring ConsoleText(const std::string& text) {
    std::wstring result;
    for (const wchar_t character : WideFromUtf8(text)) {
        result += character == L'\n' ? L"\r\n" : std::wstring(1, character);
    }
    return result;
}

bool WriteToConsole(HANDLE console, const std::string& text) {
    std::optional<EscapeSequences> escapes;
    if (text.find('\x1b') != std::string::npos) {
        escapes.emplace(console);
    }
    // Older systems take 64 kB at a time.
    constexpr std::size_t most = 8192;
    const std::wstring wide = ConsoleText(text);
    for (std::size_t begin = 0; begin < wide.size();) {
        std::size_t count = std::min(most, wide.size() - begin);
        // The halves of a character stay together.
        if (begin + count < wide.size() && IS_HIGH_SURROGATE(wide[begin + count - 1])) {
            --count;
        }
        DWORD written = 0;
        if (WriteConsoleW(console, &wide[begin], static_cast<DWORD>(count), &written, nullptr) == FALSE ||
            written == 0) {
            return false;
        }
        begin += written;
    }
    return true;
}

bool Write(std::FILE* stream, const std::string& text) {
    HANDLE console = ConsoleOf(stream);
    // What others have left in the stream comes first.
    return console ? std::fflush(stream) == 0 && WriteToConsole(console, text) : WriteBytes(stream, text);
}

bool IsTerminalWithColours(std::FILE* stream) {
    HANDLE console = ConsoleOf(stream);
    return console != nullptr && EscapeSequences(console).AreObeyed();
}

#else

bool Write(std::FILE* stream, const std::string& text) {
    return WriteBytes(stream, text);
}

bool IsTerminalWithColours(std::FILE* stream) {
    const std::string terminal = EnvironmentValue("TERM");
    return isatty(fileno(stream)) != 0 && !terminal.empty() && terminal != "dumb";
}

#endif

/// Red or yellow for the word that a complaint begins with.
std::string WithColours(const std::string& text) {
    struct Label {
        std::string word;
        const char* colour;
    };
    for (const auto& [word, colour] : {Label{"error:", "\x1b[1;31m"}, Label{"warning:", "\x1b[1;33m"}}) {
        if (text.compare(0, word.size(), word) == 0) {
            return colour + word + "\x1b[0m" + text.substr(word.size());
        }
    }
    return text;
}

} // namespace

bool Print(std::FILE* stream, const std::string& text) {
    const std::string coloured = WithColours(text);
    return Write(stream, coloured == text || !ShowsColours(stream) ? text : coloured);
}

bool ShowsColours(std::FILE* stream) {
    return EnvironmentValue("NO_COLOR").empty() && IsTerminalWithColours(stream);
}

} // namespace kinora::programs

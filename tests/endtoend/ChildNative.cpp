#include "tests/endtoend/Child.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <future>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace endtoend {
namespace {

/// What a child finds open: nothing to read, and a file for both its output streams.
class Streams {
public:
    explicit Streams(const std::filesystem::path& output) {
        constexpr mode_t rights = 0666;
        posix_spawn_file_actions_init(&m_actions);
        posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&m_actions, STDOUT_FILENO, output.c_str(),
                                         O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, rights);
        posix_spawn_file_actions_adddup2(&m_actions, STDOUT_FILENO, STDERR_FILENO);
    }
    ~Streams() { posix_spawn_file_actions_destroy(&m_actions); }
    Streams(const Streams&) = delete;
    Streams& operator=(const Streams&) = delete;
    const posix_spawn_file_actions_t* Actions() const { return &m_actions; }

private:
    posix_spawn_file_actions_t m_actions = {};
};

pid_t Start(const std::filesystem::path& program, std::vector<std::string> arguments,
            const std::filesystem::path& output) {
    arguments.insert(arguments.begin(), program.string());
    std::vector<char*> texts;
    for (std::string& argument : arguments) {
        texts.push_back(argument.data());
    }
    texts.push_back(nullptr);
    const Streams streams(output);
    pid_t process = 0;
    if (posix_spawn(&process, program.c_str(), streams.Actions(), nullptr, texts.data(), environ) != 0) {
        throw std::runtime_error("the program does not start");
    }
    return process;
}

} // namespace

int RunChild(const std::filesystem::path& program, const std::vector<std::string>& arguments,
             const std::filesystem::path& output) {
    constexpr std::chrono::minutes longestRun(4);
    constexpr int hangs = 999;
    const pid_t process = Start(program, arguments, output);
    std::future<int> end = std::async(std::launch::async, [process] {
        int status = 0;
        waitpid(process, &status, 0);
        return status;
    });
    if (end.wait_for(longestRun) == std::future_status::timeout) {
        kill(process, SIGKILL);
    }
    const int status = end.get();
    return WIFEXITED(status) ? WEXITSTATUS(status) : hangs;
}

} // namespace endtoend

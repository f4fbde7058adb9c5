#pragma once

#include "trace/core/Show.h"

#include <string>
#include <vector>

namespace kinora::trace {

/// What the user asked for. Texts are UTF-8.
struct CommandLine {
    enum class Task { Register, Unregister, Show, Stats, Script, Diff, Help, Bad };

    Task task = Task::Help;
    /// Parts of one trace; for Diff the two traces.
    std::vector<std::string> files;
    ShowOptions show;
    /// For Help and Bad.
    std::string text;
};

/// @param words  the arguments without the program's name
CommandLine ReadCommandLine(std::vector<std::string> words);

} // namespace kinora::trace

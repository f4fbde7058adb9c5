#pragma once

#include "trace/core/Show.h"

#include <string>
#include <vector>

namespace kinora::trace {

/// What the user asked for. Texts are UTF-8.
struct CommandLine {
    enum class Task { Register, Unregister, Show, Stats, Script, Diff, Help, Bad };

    Task task = Task::Help;
    /// Parts of one trace, or its first part; empty for the newest trace. For Diff the two traces.
    std::vector<std::string> files;
    /// For Diff only whether lists are whole.
    ShowOptions show;
    /// Whether to colour what Show prints; Auto does so on a terminal.
    enum class Colour { Auto, Always, Never };
    Colour colour = Colour::Auto;
    /// For Help and Bad.
    std::string text;
};

/// @param words  the arguments without the program's name
CommandLine ReadCommandLine(std::vector<std::string> words);

} // namespace kinora::trace

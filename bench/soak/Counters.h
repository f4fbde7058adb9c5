#pragma once

#include <cstddef>
#include <string>

/// What a process holds.
struct Counters {
    std::size_t privateBytes = 0;
    std::size_t handles = 0;
};

Counters OfThisProcess();

/// Of the process that runs the program of this file name; of no process, zeros.
Counters OfProgram(const std::wstring& fileName);

#pragma once

#include <cstddef>

/// operator new of this program: it can count, and fail, what the library allocates.
///
/// Only programs that hold the library's own object files and link the language's runtime statically see every
/// allocation here.
class CountingNew {
public:
    /// While one lives, this thread runs the library (but for the times inside of the fake desktop).
    class InLibrary {
    public:
        InLibrary();
        ~InLibrary();
        InLibrary(const InLibrary&) = delete;
        InLibrary& operator=(const InLibrary&) = delete;
    };

    /// From now on every thread but the one that asks for this runs the library, which has made them.
    static void CountOtherThreads();

    /// Blocks, and bytes in them, that the library has allocated and that live now.
    static std::size_t LiveBlocks();
    static std::size_t LiveBytes();
    /// Lets the n-th allocation of the library from now on fail, once; 0 lets all succeed and counts anew.
    static void Fail(std::size_t number);
    /// Allocations of the library since the last `Fail`.
    static std::size_t Count();
};

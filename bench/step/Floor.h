#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string>
#include <vector>

/// What a step costs at the least: the same calls with the same arguments, built from texts that are wide already.
namespace Floor {

/// An argument, taken apart.
struct Node {
    VARTYPE type = VT_EMPTY;
    VARIANT plain = {};
    std::wstring text;
    std::vector<Node> elements;
};

struct Call {
    IDispatch* object;
    const wchar_t* method;
    /// As they stand in the block.
    std::vector<Node> arguments;
};

/// Records every call that reaches the bench desktop while it lives. One at a time.
class Recording {
public:
    Recording();
    ~Recording();
    std::vector<Call> calls;
};

/// Looks up and invokes everything again: one SysAllocStringLen per text, one array creation per array, elements
/// written in place, freed after each call.
void Replay(const std::vector<Call>& calls);

/// Bytes of texts, array elements and their headers in the arguments of the calls.
std::size_t ArgumentBytes(const std::vector<Call>& calls);

} // namespace Floor

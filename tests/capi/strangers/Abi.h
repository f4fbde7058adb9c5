#pragma once

#include <string>
#include <vector>

using Texts = std::vector<std::string>;

/// A text file beside the C interface's header.
std::string InterfaceFile(const char* name);

/// The lines of capi/abi.txt of some kinds ("size", "function" and so on).
Texts Facts(const Texts& kinds);

/// The functions in capi/abi.txt, in ascending order.
Texts FunctionNames();

/// Every name that the library gives away, in ascending order.
Texts ExportedNames();

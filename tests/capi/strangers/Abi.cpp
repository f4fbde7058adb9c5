#include "tests/capi/strangers/Abi.h"

#include "tests/endtoend/Programs.h"

#include <algorithm>

std::string InterfaceFile(const char* name) {
    return endtoend::Content(endtoend::Examples().parent_path() / "capi" / name);
}

Texts Facts(const Texts& kinds) {
    Texts facts;
    for (const std::string& line : endtoend::Lines(InterfaceFile("abi.txt"))) {
        if (std::count(kinds.begin(), kinds.end(), line.substr(0, line.find(' '))) > 0) {
            facts.push_back(line);
        }
    }
    return facts;
}

Texts FunctionNames() {
    Texts names;
    for (const std::string& fact : Facts({"function"})) {
        names.push_back(fact.substr(fact.find(' ') + 1));
    }
    std::sort(names.begin(), names.end());
    return names;
}

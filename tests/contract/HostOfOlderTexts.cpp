// A host whose texts are those from before C++11.
#define _GLIBCXX_USE_CXX11_ABI 0

#include "interface/IKinoraVeltrixInterface.h"

bool IsCompatibleWithOlderTexts();

bool IsCompatibleWithOlderTexts() {
    return IsKinoraVeltrixCompatible();
}

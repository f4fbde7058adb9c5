// A host whose containers know their iterators.
#define _GLIBCXX_DEBUG

#include "interface/IKinoraVeltrixInterface.h"

bool IsCompatibleWithCheckedIterators();

bool IsCompatibleWithCheckedIterators() {
    return IsKinoraVeltrixCompatible();
}

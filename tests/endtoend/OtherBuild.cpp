// A library of another compiler, as far as a host can ask it before it hands over C++ objects.

#define KINORA_VELTRIX_EXPORTS
#include "interface/IKinoraVeltrixInterface.h"
#include "interface/KinoraVeltrixScriptErrors.h"

const char* GetKinoraVeltrixBinaryInterface() {
    return "another build";
}

IKinoraVeltrixInterface* GetKinoraVeltrixFactoryInterface() {
    return nullptr;
}

const char* GetKinoraVeltrixScriptErrorText(std::int32_t) {
    return nullptr;
}

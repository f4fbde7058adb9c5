// Gets the coupling object, and launches a desktop that is not there.

#include "interface/IKinoraVeltrixInterface.h"

#include <cstdio>
#include <cstdlib>

int main() {
    IKinoraVeltrixInterface* coupling = GetKinoraVeltrixFactoryInterface();
    if (!coupling || coupling != GetKinoraVeltrixFactoryInterface() || coupling->SaveProject()) {
        return 1;
    }
    _putenv("KINORA_VELTRIX_VTDK_VERSION=NotInstalled");
    try {
        coupling->CreateProject("C:\\never.project", "C:\\never.obj", "mm");
        return 2;
    } catch (const LaunchDesktopExeption& error) {
        std::puts(error.what());
        return 0;
    }
}

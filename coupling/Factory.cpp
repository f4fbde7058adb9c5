#include "coupling/KinoraVeltrixCoupling.h"

IKinoraVeltrixInterface* GetKinoraVeltrixFactoryInterface() {
    // Never destroyed: a host may hold the pointer until the process ends.
    static IKinoraVeltrixInterface* object = nullptr;
    if (!object) {
        object = new CKinoraVeltrixCoupling();
    }
    return object;
}

const char* GetKinoraVeltrixBinaryInterface() {
    return KINORA_VELTRIX_BINARY_INTERFACE;
}

CKinoraVeltrixCoupling::CKinoraVeltrixCoupling() = default;
CKinoraVeltrixCoupling::CKinoraVeltrixCoupling(const CKinoraVeltrixCoupling& other) = default;
CKinoraVeltrixCoupling& CKinoraVeltrixCoupling::operator=(const CKinoraVeltrixCoupling& other) = default;
CKinoraVeltrixCoupling::~CKinoraVeltrixCoupling() = default;

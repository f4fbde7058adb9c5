#pragma once

#include <windows.h>

#include <oaidl.h>

/// Lets go of an automation object that a plain member holds, and empties the member.
inline void ReleaseReference(IDispatch*& object) {
    if (object) {
        object->Release();
    }
    object = nullptr;
}

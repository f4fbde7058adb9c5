#pragma once

#include "comutils/Dispatch.h"

/// Lets go of an automation object that a plain member holds, and empties the member.
inline void ReleaseReference(IDispatch*& object) {
    if (object) {
        object->Release();
    }
    object = nullptr;
}

/// @return a further reference on an object that a plain member holds; null for null
inline CObject SharedReference(IDispatch* object) {
    if (object) {
        object->AddRef();
    }
    return CObject(object);
}

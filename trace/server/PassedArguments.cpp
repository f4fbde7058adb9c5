#include "trace/server/PassedArguments.h"

#include "trace/server/Tracer.h"

#include <new>

namespace kinora::trace {

PassedArguments::PassedArguments(Tracer& tracer, DISPPARAMS* parameters) noexcept
    : m_tracer(tracer), m_client(parameters) {
    try {
        Prepare();
    } catch (...) {
        m_status = E_OUTOFMEMORY;
    }
}

PassedArguments::~PassedArguments() {
    for (SAFEARRAY* const array : m_arrays) {
        SafeArrayDestroy(array);
    }
    for (IUnknown* const wrapper : m_kept) {
        wrapper->Release();
    }
}

void PassedArguments::Prepare() {
    bool hasWrappers = false;
    bool hasReferredWrappers = false;
    for (UINT i = 0; i < Count(); ++i) {
        m_hasReferences = m_hasReferences || (V_VT(&Begin()[i]) & VT_BYREF) != 0;
        VisitObjects(Begin()[i], [&](const ObjectSlot& slot) {
            const bool isWrapper = *slot.object != nullptr && m_tracer.AsWrapper(*slot.object) != nullptr;
            hasWrappers = hasWrappers || (isWrapper && !slot.isByReference);
            hasReferredWrappers = hasReferredWrappers || (isWrapper && slot.isByReference);
            if (slot.isByReference && *slot.object && !isWrapper) {
                m_foreign.insert(*slot.object);
            }
        });
    }
    if (hasWrappers) {
        CopyBlock();
    }
    if (hasReferredWrappers) {
        ReplaceReferred();
    }
}

void PassedArguments::CopyBlock() {
    m_block.assign(Begin(), Begin() + Count());
    m_arrays.reserve(Count());
    for (VARIANT& argument : m_block) {
        ReplaceValue(argument);
    }
    m_copy = *m_client;
    m_copy.rgvarg = m_block.data();
    m_isCopied = true;
}

void PassedArguments::ReplaceValue(VARIANT& argument) {
    const VARTYPE type = V_VT(&argument);
    if (type == VT_DISPATCH || type == VT_UNKNOWN) {
        // Lent for the call: the client's argument keeps the wrapper, and that the object.
        IDispatch* const object = !V_UNKNOWN(&argument) ? nullptr : m_tracer.ObjectBehind(V_UNKNOWN(&argument));
        V_UNKNOWN(&argument) = object == nullptr ? V_UNKNOWN(&argument) : object;
        return;
    }
    bool hasWrappers = false;
    VisitObjects(argument, [&](const ObjectSlot& slot) {
        hasWrappers = hasWrappers || (!slot.isByReference && *slot.object && m_tracer.AsWrapper(*slot.object));
    });
    if (!hasWrappers) {
        return;
    }
    SAFEARRAY* copy = nullptr;
    if (FAILED(SafeArrayCopy(V_ARRAY(&argument), &copy))) {
        throw std::bad_alloc();
    }
    m_arrays.push_back(copy);
    V_ARRAY(&argument) = copy;
    VisitObjects(argument, [&](const ObjectSlot& slot) {
        IDispatch* const object = slot.isByReference || !*slot.object ? nullptr : m_tracer.ObjectBehind(*slot.object);
        if (object) {
            object->AddRef();
            (*slot.object)->Release();
            *slot.object = object;
        }
    });
}

void PassedArguments::ReplaceReferred() {
    for (UINT i = 0; i < Count(); ++i) {
        VisitObjects(Begin()[i], [&](const ObjectSlot& slot) {
            IDispatch* const object =
                !slot.isByReference || !*slot.object ? nullptr : m_tracer.ObjectBehind(*slot.object);
            if (object) {
                m_kept.push_back(*slot.object);
                object->AddRef();
                *slot.object = object;
            }
        });
    }
}

void PassedArguments::TakeBack(const std::string& path) noexcept {
    for (UINT i = 0; m_hasReferences && i < Count(); ++i) {
        VisitObjects(Begin()[i], [&](const ObjectSlot& slot) {
            if (slot.isByReference && *slot.object && m_foreign.count(*slot.object) == 0) {
                m_tracer.WrapSlot(slot, path);
            }
        });
    }
}

} // namespace kinora::trace

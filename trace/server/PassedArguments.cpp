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
            const bool isWrapper = *slot.place != nullptr && m_tracer.AsWrapper(*slot.place) != nullptr;
            hasWrappers = hasWrappers || (isWrapper && !slot.isByReference);
            hasReferredWrappers = hasReferredWrappers || (isWrapper && slot.isByReference);
            if (slot.isByReference && *slot.place != nullptr && !isWrapper) {
                m_foreign.insert(*slot.place);
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
        IDispatch* const object =
            V_UNKNOWN(&argument) == nullptr ? nullptr : m_tracer.ObjectBehind(V_UNKNOWN(&argument));
        V_UNKNOWN(&argument) = object == nullptr ? V_UNKNOWN(&argument) : object;
        return;
    }
    bool hasWrappers = false;
    VisitObjects(argument, [&](const ObjectSlot& slot) {
        hasWrappers = hasWrappers ||
                      (!slot.isByReference && *slot.place != nullptr && m_tracer.AsWrapper(*slot.place) != nullptr);
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
        IDispatch* const object =
            slot.isByReference || *slot.place == nullptr ? nullptr : m_tracer.ObjectBehind(*slot.place);
        if (object != nullptr) {
            object->AddRef();
            (*slot.place)->Release();
            *slot.place = object;
        }
    });
}

void PassedArguments::ReplaceReferred() {
    for (UINT i = 0; i < Count(); ++i) {
        VisitObjects(Begin()[i], [&](const ObjectSlot& slot) {
            IDispatch* const object =
                !slot.isByReference || *slot.place == nullptr ? nullptr : m_tracer.ObjectBehind(*slot.place);
            if (object != nullptr) {
                m_kept.push_back(*slot.place);
                object->AddRef();
                *slot.place = object;
            }
        });
    }
}

void PassedArguments::TakeBack(const std::string& path) noexcept {
    for (UINT i = 0; m_hasReferences && i < Count(); ++i) {
        VisitObjects(Begin()[i], [&](const ObjectSlot& slot) {
            if (slot.isByReference && *slot.place != nullptr && m_foreign.count(*slot.place) == 0) {
                m_tracer.WrapPlace(slot.place, slot.type, path);
            }
        });
    }
}

} // namespace kinora::trace

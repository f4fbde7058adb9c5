#pragma once

#include <windows.h>

#include <unknwn.h>

#include <atomic>

namespace kinora::programs {

/// What every COM object does: it answers for one interface beside IUnknown, counts its references from 1 on, and
/// deletes itself with the last one. It may be used by several threads at once.
template <typename Interface, const IID& interfaceId>
class ComObject : public Interface {
public:
    ComObject() = default;
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) final {
        if (!result) {
            return E_POINTER;
        }
        *result = nullptr;
        if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, interfaceId)) {
            return E_NOINTERFACE;
        }
        *result = static_cast<Interface*>(this);
        AddRef();
        return S_OK;
    }

    ULONG STDMETHODCALLTYPE AddRef() final { return ++m_references; }

    ULONG STDMETHODCALLTYPE Release() final {
        const ULONG left = --m_references;
        if (left == 0) {
            delete this;
        }
        return left;
    }

protected:
    virtual ~ComObject() = default;

    /// AddRef for somebody who has no reference.
    /// @return false when the last one is gone and the object about to end
    bool AddRefUnlessEnding() {
        ULONG references = m_references;
        while (references != 0 && !m_references.compare_exchange_weak(references, references + 1)) {
        }
        return references != 0;
    }

private:
    std::atomic<ULONG> m_references{1};
};

} // namespace kinora::programs

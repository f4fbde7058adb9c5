#include "trace/server/Tracer.h"

#include "trace/server/TracedEnumeration.h"
#include "trace/server/TracedObject.h"
#include "trace/server/VariantVisit.h"

#include <new>
#include <utility>

namespace kinora::trace {

IDispatch* Tracer::WrapperOf(IDispatch* object, const std::string& path) noexcept {
    IUnknown* identity = nullptr;
    if (FAILED(object->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&identity)))) {
        return nullptr;
    }
    TracedObject* wrapper = nullptr;
    try {
        const std::lock_guard<std::mutex> lock(m_mutex);
        TracedObject*& known = m_byIdentity[identity];
        if (known && known->TryAddRef()) {
            wrapper = known;
        } else {
            // A wrapper whose last reference has just gone makes way for a new one. The set's node is made first: a
            // wrapper that cannot be remembered must not be.
            auto node = m_wrappers.extract(m_wrappers.insert(nullptr).first);
            wrapper = new TracedObject(*this, object, identity, {NextId(), path});
            node.value() = wrapper;
            m_wrappers.insert(std::move(node));
            known = wrapper;
        }
    } catch (...) {
        wrapper = nullptr;
    }
    identity->Release();
    return wrapper;
}

IUnknown* Tracer::WrapperOfUnknown(IUnknown* object, const std::string& path) noexcept {
    IDispatch* dispatch = nullptr;
    if (SUCCEEDED(object->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&dispatch)))) {
        IUnknown* const wrapper = WrapperOf(dispatch, path);
        dispatch->Release();
        return wrapper;
    }
    IEnumVARIANT* enumeration = nullptr;
    if (FAILED(object->QueryInterface(IID_IEnumVARIANT, reinterpret_cast<void**>(&enumeration)))) {
        return nullptr;
    }
    IUnknown* const wrapper = TracedEnumeration::Make(*this, enumeration, path);
    enumeration->Release();
    return wrapper;
}

void Tracer::WrapSlot(const ObjectSlot& slot, const std::string& path) noexcept {
    IUnknown* const object = *slot.object;
    if (!object || AsWrapper(object)) {
        return;
    }
    IUnknown* const wrapper =
        slot.type == VT_DISPATCH ? WrapperOf(static_cast<IDispatch*>(object), path) : WrapperOfUnknown(object, path);
    if (wrapper) {
        *slot.object = wrapper;
        object->Release();
    }
}

void Tracer::Wrap(VARIANT& value, const std::string& path) noexcept {
    try {
        VisitObjects(value, [&](const ObjectSlot& slot) {
            WrapSlot(slot, slot.index < 0 ? path : path + "[" + std::to_string(slot.index) + "]");
        });
    } catch (...) {
        // Memory for a path is lacking: what is not wrapped by now stays untraced.
    }
}

TracedObject* Tracer::AsWrapper(IUnknown* object) const noexcept {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_wrappers.count(object) != 0 ? static_cast<TracedObject*>(object) : nullptr;
}

IDispatch* Tracer::ObjectBehind(IUnknown* wrapper) const noexcept {
    TracedObject* const traced = AsWrapper(wrapper);
    return traced == nullptr ? nullptr : traced->Object();
}

std::size_t Tracer::Wrappers() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_wrappers.size();
}

void Tracer::Forget(TracedObject& wrapper) noexcept {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_wrappers.erase(&wrapper);
    const auto found = m_byIdentity.find(wrapper.Identity());
    if (found != m_byIdentity.end() && found->second == &wrapper) {
        m_byIdentity.erase(found);
    }
}

} // namespace kinora::trace

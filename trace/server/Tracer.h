#pragma once

#include "trace/server/Recorder.h"

#include <windows.h>

#include <oaidl.h>

#include <atomic>
#include <map>
#include <mutex>
#include <set>
#include <string>

namespace kinora::trace {

struct ObjectSlot;
class TracedObject;

/// Knows all objects that are traced now, and stands for them: gives every object of the desktop its one wrapper for as
/// long as a client holds that, and finds the object behind a wrapper. Safe on all threads. Outlives its wrappers.
class Tracer {
public:
    explicit Tracer(RecorderSettings settings) : m_recorder(std::move(settings)) {}

    Recorder& ItsRecorder() { return m_recorder; }

    /// The wrapper of an object, with one reference for the caller. The object's own references stay as they are, but
    /// for the one that a new wrapper holds.
    /// @param path  what the object is called in the trace when it is new there
    /// @return null when memory is lacking
    IDispatch* WrapperOf(IDispatch* object, const std::string& path) noexcept;

    /// Puts wrappers in place of all objects of a value that the desktop gave, in arrays too. Objects that cannot be
    /// wrapped stay as they are.
    void Wrap(VARIANT& value, const std::string& path) noexcept;

    /// Puts the wrapper in place of one object; the reference that stood there is released. What is only known as
    /// VT_UNKNOWN is wrapped when it is an automation object or an enumeration.
    void WrapSlot(const ObjectSlot& slot, const std::string& path) noexcept;

    /// The object behind a wrapper, without a new reference; null for anything that is no wrapper of this tracer.
    IDispatch* ObjectBehind(IUnknown* wrapper) const noexcept;

    /// The wrapper itself, when this is one.
    TracedObject* AsWrapper(IUnknown* object) const noexcept;

    /// A number for an object that is new in the trace; they count from 1.
    std::uint64_t NextId() noexcept { return ++m_lastId; }

    /// Wrappers of automation objects that clients hold now.
    std::size_t Wrappers() const;

private:
    friend class TracedObject;
    void Forget(TracedObject& wrapper) noexcept;
    IUnknown* WrapperOfUnknown(IUnknown* object, const std::string& path) noexcept;

    Recorder m_recorder;
    mutable std::mutex m_mutex;
    /// By the object's identity, its IUnknown.
    std::map<IUnknown*, TracedObject*> m_byIdentity;
    std::set<const IUnknown*> m_wrappers;
    std::atomic<std::uint64_t> m_lastId{0};
};

} // namespace kinora::trace

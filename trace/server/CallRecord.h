#pragma once

#include <windows.h>

#include <oaidl.h>

#include <cstdint>
#include <string>

namespace kinora::trace {

class Tracer;

/// What an object is called in the trace.
struct ObjectLabel {
    std::uint64_t id = 0;
    std::string path;
};

/// One line of the trace while its call runs. Nothing here throws; a call whose line cannot be made for lack of memory
/// is missing from the trace.
class CallRecord {
public:
    /// Begins the line of a look-up.
    static CallRecord Lookup(Tracer& tracer, const ObjectLabel& label, const LPOLESTR* names, UINT count) noexcept;
    /// Begins the line of a call.
    static CallRecord Call(Tracer& tracer, const ObjectLabel& label, const std::string& method, DISPID id, WORD flags,
                           const DISPPARAMS* parameters) noexcept;
    /// Begins the line of the creation of the desktop.
    static CallRecord Create(Tracer& tracer, const std::wstring& target) noexcept;

    /// @name What is told after the call, before Finish
    /// @{
    /// The number of the name, and those of its arguments' names.
    void AddIds(const DISPID* ids, UINT count) noexcept;
    void AddResult(const VARIANT& result) noexcept;
    /// A result of several values.
    void AddElements(const VARIANT* elements, ULONG count) noexcept;
    /// What the arguments passed by reference hold now.
    void AddReferences(const DISPPARAMS& parameters) noexcept;
    /// @param mayAsk  the texts may be asked for that the object gives on demand only
    void AddException(EXCEPINFO& exception, bool mayAsk) noexcept;
    void AddArgumentError(UINT position, UINT count) noexcept;
    /// @}

    /// Completes the line.
    void Finish(HRESULT code, double microseconds) noexcept;

private:
    explicit CallRecord(Tracer& tracer) noexcept;
    template <class Write>
    void Try(const Write& write) noexcept;
    void Begin(const char* kind, const ObjectLabel* label);
    void AppendVariant(std::string& out, const VARIANT& value) const;

    Tracer* m_tracer;
    std::uint64_t m_sequence;
    std::string m_head;
    std::string m_tail;
    bool m_isLost = false;
};

} // namespace kinora::trace

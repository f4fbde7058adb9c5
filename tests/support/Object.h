#pragma once

#include "tests/support/DispatchBase.h"
#include "tests/support/World.h"

#include <functional>
#include <map>
#include <string>

namespace fake {

/// A desktop object that answers as told and records everything. It checks on every call that the rules of late-bound
/// automation are kept: one name, IID_NULL, locale 0x0800, DISPATCH_METHOD, no named arguments, no exception and
/// argument-error pointers, a result VARIANT of zeros, a name looked up anew for every invocation, and a reference held
/// by somebody.
class Object final : public DispatchBase {
public:
    using Handler = std::function<Answer(const Arguments&)>;

    Object(World& world, std::string path, bool isHeld);

    /// Defines or redefines a method.
    Object& On(const std::string& method, Handler handler);
    Object& On(const std::string& method, const Answer& answer);
    /// Another answer for the n-th call of a method from now on, n counted from 1.
    Object& OnCall(const std::string& method, unsigned number, const Answer& answer);
    /// Makes the name unknown.
    Object& Forget(const std::string& method);

    /// References that callers hold now (the one of `World::MakeHeld` not counted).
    long References() const { return m_references - m_held; }
    const std::string& Path() const { return m_path; }

    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception, UINT* argumentError) override;

private:
    struct Method {
        Handler handler;
        std::map<unsigned, Answer> special;
        unsigned calls = 0;
    };
    struct Lookup {
        std::string method;
        std::size_t entry;
        const Fault* fault;
    };

    void Check(bool isKept, const std::string& method, const char* rule);
    Answer AnswerTo(const Lookup& lookup, const Arguments& arguments);
    Entry& Record(const Lookup& lookup, Arguments arguments);

    World& m_world;
    std::string m_path;
    long m_held;
    long m_references;
    std::map<std::string, Method> m_methods;
    /// Names looked up and not invoked yet. Every lookup gives a new id, so a remembered one is found out.
    std::map<DISPID, Lookup> m_lookups;
};

} // namespace fake

#include "trace/server/TracedObject.h"

#include "programs/Utf.h"
#include "trace/core/ObjectPath.h"
#include "trace/server/PassedArguments.h"
#include "trace/server/Stopwatch.h"
#include "trace/server/Tracer.h"

namespace kinora::trace {
namespace {

/// Objects that give a new number at every look-up must not fill the memory.
constexpr std::size_t mostNames = 1024;

/// Exception record of our own, for clients that did not pass one.
class OwnException {
public:
    OwnException() = default;
    ~OwnException() {
        SysFreeString(m_info.bstrSource);
        SysFreeString(m_info.bstrDescription);
        SysFreeString(m_info.bstrHelpFile);
    }
    OwnException(const OwnException&) = delete;
    OwnException& operator=(const OwnException&) = delete;
    EXCEPINFO& Info() { return m_info; }

private:
    EXCEPINFO m_info = {};
};

/// Path of what a call gives; empty when memory is lacking.
std::string ResultPath(const std::string& path, const std::string& method, const DISPPARAMS* parameters) noexcept {
    try {
        std::vector<std::string> texts;
        for (UINT i = parameters == nullptr ? 0 : parameters->cArgs; i > 0; --i) {
            const VARIANT& argument = parameters->rgvarg[i - 1];
            if (V_VT(&argument) == VT_BSTR) {
                texts.push_back(programs::Utf8FromWide({V_BSTR(&argument), SysStringLen(V_BSTR(&argument))}));
            }
        }
        return ChildPath(path, method, texts);
    } catch (...) {
        return {};
    }
}

} // namespace

TracedObject::TracedObject(Tracer& tracer, IDispatch* object, IUnknown* identity, ObjectLabel label)
    : m_tracer(tracer), m_object(object), m_identity(identity), m_label(std::move(label)) {
    m_object->AddRef();
}

TracedObject::~TracedObject() {
    m_tracer.Forget(*this);
    m_object->Release();
}

void TracedObject::Remember(DISPID id, const std::string& name) noexcept {
    try {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_names.size() >= mostNames) {
            m_names.clear();
        }
        m_names[id] = name;
    } catch (...) {
        // The trace shows the number instead.
    }
}

std::string TracedObject::NameOf(DISPID id) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_names.find(id);
    if (found != m_names.end()) {
        return found->second;
    }
    return id == DISPID_NEWENUM ? "_NewEnum" : "#" + std::to_string(id);
}

HRESULT TracedObject::GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) {
    CallRecord record = CallRecord::Lookup(m_tracer, m_label, names, count);
    const Stopwatch watch;
    const HRESULT code = m_object->GetIDsOfNames(iid, names, count, locale, ids);
    const double duration = watch.Microseconds();
    if (SUCCEEDED(code) && ids && names && count > 0) {
        record.AddIds(ids, count);
        try {
            Remember(ids[0], programs::Utf8FromWide(names[0]));
        } catch (...) {
            // As in Remember.
        }
    }
    record.Finish(code, duration);
    return code;
}

HRESULT TracedObject::Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                             EXCEPINFO* exception, UINT* argumentError) {
    std::string method;
    try {
        method = NameOf(id);
    } catch (...) {
        // Then the call has no name in the trace.
    }
    CallRecord record = CallRecord::Call(m_tracer, m_label, method, id, flags, parameters);
    PassedArguments arguments(m_tracer, parameters);
    const std::string path = ResultPath(m_label.path, method, parameters);
    OwnException ownException;
    UINT ownArgumentError = static_cast<UINT>(-1);
    EXCEPINFO* const usedException = exception != nullptr ? exception : &ownException.Info();
    UINT* const usedArgumentError = argumentError != nullptr ? argumentError : &ownArgumentError;
    if (FAILED(arguments.Status())) {
        arguments.TakeBack(path);
        record.Finish(arguments.Status(), 0.0);
        return arguments.Status();
    }
    const Stopwatch watch;
    const HRESULT code =
        m_object->Invoke(id, iid, locale, flags, arguments.ForObject(), result, usedException, usedArgumentError);
    const double duration = watch.Microseconds();
    arguments.TakeBack(path);
    if (SUCCEEDED(code) && result) {
        m_tracer.Wrap(*result, path);
        record.AddResult(*result);
    }
    if (arguments.HasReferences()) {
        record.AddReferences(*parameters);
    }
    if (code == DISP_E_EXCEPTION) {
        // A client that passed a record asks for its texts itself, and may do so only once.
        record.AddException(*usedException, !exception);
    }
    if (code == DISP_E_TYPEMISMATCH || code == DISP_E_PARAMNOTFOUND) {
        record.AddArgumentError(*usedArgumentError, !parameters ? 0 : parameters->cArgs);
    }
    record.Finish(code, duration);
    return code;
}

} // namespace kinora::trace

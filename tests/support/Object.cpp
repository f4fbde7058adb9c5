#include "tests/support/Object.h"

#include <algorithm>
#include <utility>

namespace fake {
namespace {

constexpr LCID systemDefaultLocale = 0x0800;

bool IsZeroed(const VARIANT& variant) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(&variant);
    return std::all_of(bytes, bytes + sizeof variant, [](unsigned char byte) { return byte == 0; });
}

DISPID NextId() {
    static DISPID lastId = 1000;
    return ++lastId;
}

Arguments InScriptOrder(const DISPPARAMS& parameters) {
    Arguments arguments;
    for (UINT index = parameters.cArgs; index > 0; --index) {
        arguments.push_back(Read(parameters.rgvarg[index - 1]));
    }
    return arguments;
}

} // namespace

Object::Object(World& world, std::string path, bool isHeld)
    : m_world(world), m_path(std::move(path)), m_held(isHeld ? 1 : 0), m_references(m_held) {}

Object& Object::On(const std::string& method, Handler handler) {
    m_methods[method].handler = std::move(handler);
    return *this;
}

Object& Object::On(const std::string& method, const Answer& answer) {
    return On(method, [answer](const Arguments&) { return answer; });
}

Object& Object::OnCall(const std::string& method, unsigned number, const Answer& answer) {
    Method& entry = m_methods[method];
    entry.special[entry.calls + number] = answer;
    return *this;
}

Object& Object::Forget(const std::string& method) {
    m_methods.erase(method);
    return *this;
}

ULONG Object::AddRef() {
    return static_cast<ULONG>(++m_references);
}

ULONG Object::Release() {
    if (References() <= 0) {
        m_world.Report(m_path + " was released once too often");
        return 0;
    }
    --m_references;
    if (References() == 0 && m_world.onLetGo) {
        m_world.onLetGo(*this);
    }
    return static_cast<ULONG>(m_references);
}

void Object::Check(bool isKept, const std::string& method, const char* rule) {
    if (!isKept) {
        m_world.Report(m_path + "." + method + ": " + rule);
    }
}

HRESULT Object::GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) {
    const InsideDesktop inside;
    const std::string method = count == 0 ? std::string() : ToUtf8(names[0]);
    Check(m_references > 0, method, "looked up after the last release");
    Check(IsEqualIID(iid, IID_NULL) != 0, method, "looked up with an interface id other than IID_NULL");
    Check(count == 1, method, "looked up together with other names");
    Check(locale == systemDefaultLocale, method, "looked up with a locale other than 0x0800");
    const Fault* const fault = m_world.BeginCall();
    const bool isUnknown = m_methods.count(method) == 0;
    if (isUnknown || (fault && FAILED(fault->lookup))) {
        m_world.m_entries.push_back({Entry::Kind::NameUnknown, m_path, method, {}});
        return isUnknown ? DISP_E_UNKNOWNNAME : fault->lookup;
    }
    m_world.m_entries.push_back({Entry::Kind::NameKnown, m_path, method, {}});
    ids[0] = NextId();
    m_lookups[ids[0]] = {method, m_world.m_entries.size() - 1, fault};
    return S_OK;
}

HRESULT Object::Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                       EXCEPINFO* exception, UINT* argumentError) {
    const InsideDesktop inside;
    const auto found = m_lookups.find(id);
    if (found == m_lookups.end()) {
        m_world.Report(m_path + " was invoked with an id that was not looked up for this call");
        return DISP_E_MEMBERNOTFOUND;
    }
    const Lookup lookup = found->second;
    m_lookups.erase(found);
    Check(m_references > 0, lookup.method, "invoked after the last release");
    Check(IsEqualIID(iid, IID_NULL) != 0, lookup.method, "invoked with an interface id other than IID_NULL");
    Check(locale == systemDefaultLocale, lookup.method, "invoked with a locale other than 0x0800");
    Check(flags == DISPATCH_METHOD, lookup.method, "invoked with flags other than DISPATCH_METHOD");
    Check(!exception && !argumentError, lookup.method, "invoked with error out-parameters");
    Check(parameters->cNamedArgs == 0, lookup.method, "invoked with named arguments");
    Check(result && IsZeroed(*result), lookup.method, "invoked without a result VARIANT of zeros");
    const Arguments arguments = InScriptOrder(*parameters);
    const std::size_t entry = std::min(lookup.entry, m_world.m_entries.size());
    Record(lookup, arguments);
    if (m_world.observer) {
        m_world.observer(m_world.m_entries[entry]);
    }
    const Answer answer = AnswerTo(lookup, arguments);
    if (FAILED(answer.code) && entry < m_world.m_entries.size()) {
        m_world.m_entries[entry].kind = Entry::Kind::CallFailed;
    }
    if (answer.fill && result) {
        answer.fill(*result);
    }
    return answer.code;
}

Entry& Object::Record(const Lookup& lookup, Arguments arguments) {
    // A journal that was cleared between lookup and invocation gets a new line.
    const bool isThere = lookup.entry < m_world.m_entries.size() && m_world.m_entries[lookup.entry].object == m_path &&
                         m_world.m_entries[lookup.entry].method == lookup.method &&
                         m_world.m_entries[lookup.entry].kind == Entry::Kind::NameKnown;
    if (!isThere) {
        m_world.m_entries.push_back({Entry::Kind::NameKnown, m_path, lookup.method, {}});
    }
    Entry& entry = isThere ? m_world.m_entries[lookup.entry] : m_world.m_entries.back();
    entry.kind = Entry::Kind::Called;
    entry.arguments = std::move(arguments);
    return entry;
}

Answer Object::AnswerTo(const Lookup& lookup, const Arguments& arguments) {
    Method& method = m_methods[lookup.method];
    const auto special = method.special.find(++method.calls);
    if (lookup.fault) {
        if (SUCCEEDED(lookup.fault->answer.code) && method.handler) {
            method.handler(arguments);
        }
        return lookup.fault->answer;
    }
    if (special != method.special.end()) {
        return special->second;
    }
    return method.handler ? method.handler(arguments) : Nothing();
}

} // namespace fake

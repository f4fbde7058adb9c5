#include "tests/fuzz/HostileDesktop.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

namespace hostile {
namespace {

/// Beyond these every call throws, so that a session ends that the desktop could keep going for ever (a count of two
/// thousand million projects, an object that is its own child).
constexpr unsigned mostCalls = 3000;

constexpr int deepestValue = 4;

/// Texts that the library knows, so that answers get further than the first check.
const wchar_t* const words[] = {
    L"",
    L"Magnets",
    L"Magnet",
    L"Block",
    L"N45",
    L"N45_1",
    L"\"N45\"",
    L"\"steel\"",
    L"vacuum",
    L"\"vacuum\"",
    L"\"",
    L"\"\"",
    L"nan ",
    L"0",
    L"-890000",
    L"1e999",
    L"-1e-999",
    L"+.5",
    L"Veltrix 3D",
    L"Veltrix3DDesign1",
    L"SimTime",
    L"RegionPaddingX",
    L"Rotor_X",
    L"Rotor_Psi",
    L"Obj_CS_Rotor",
    L"Setup1",
    L"A",
    L"Material",
    L"Solve Inside",
    L"Coordinate System",
    L"Orientation",
    L"Magnetic Coercivity Components",
    L"KinoraHistory",
    L"Force_Rotor",
    L"Torque_Rotor",
    L"Never",
    L"On Completion",
    L"..",
    L"\u00E4\u78C1\U0001F9F2",
};

constexpr HRESULT failures[] = {E_FAIL,           E_OUTOFMEMORY,      E_INVALIDARG,        DISP_E_UNKNOWNNAME,
                                DISP_E_EXCEPTION, RPC_E_DISCONNECTED, DISP_E_TYPEMISMATCH, CO_E_NOTINITIALIZED};

constexpr VARTYPE invalidTypes[] = {15, 24, 77, VT_ARRAY, VT_BYREF, VT_ILLEGAL};

VARIANT Of(VARTYPE type, std::uint64_t bits) {
    VARIANT value{};
    value.vt = type;
    value.ullVal = bits;
    return value;
}

VARIANT Text(const std::wstring& text) {
    VARIANT value{};
    value.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    value.vt = VT_BSTR;
    return value;
}

VARIANT Real(double number) {
    VARIANT value{};
    value.vt = VT_R8;
    value.dblVal = number;
    return value;
}

VARIANT Array(SAFEARRAY* elements, VARTYPE type) {
    VARIANT value{};
    value.parray = elements;
    value.vt = static_cast<VARTYPE>(VT_ARRAY | type);
    return value;
}

VARIANT Texts(const std::vector<std::wstring>& texts) {
    SAFEARRAY* const list = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(texts.size()));
    std::transform(texts.begin(), texts.end(), static_cast<VARIANT*>(list->pvData), Text);
    return Array(list, VT_VARIANT);
}

/// Reads a value to its last character, so that one that is freed already is found.
void ReadThrough(const VARIANT& value) {
    if (value.vt == VT_BSTR && value.bstrVal) {
        Require(value.bstrVal[SysStringLen(value.bstrVal)] == L'\0', "a text of an argument has no end");
    } else if (value.vt == (VT_ARRAY | VT_VARIANT)) {
        Require(value.parray && SafeArrayGetDim(value.parray) == 1, "a list of an argument is none");
        const auto* const elements = static_cast<const VARIANT*>(value.parray->pvData);
        std::for_each(elements, elements + value.parray->rgsabound[0].cElements, ReadThrough);
    }
}

std::wstring FirstText(const DISPPARAMS& parameters) {
    if (parameters.cArgs == 0) {
        return {};
    }
    const VARIANT& first = parameters.rgvarg[parameters.cArgs - 1];
    return first.vt == VT_BSTR ? std::wstring(first.bstrVal, SysStringLen(first.bstrVal)) : std::wstring();
}

} // namespace

void Require(bool holds, const char* complaint) {
    if (!holds) {
        std::fprintf(stderr, "%s\n", complaint);
        std::abort();
    }
}

// Objects.

ULONG Object::AddRef() {
    return static_cast<ULONG>(++m_references);
}

ULONG Object::Release() {
    Require(m_references > 0, "an object is released once too often");
    if (--m_references == 0) {
        m_desktop.LetGo();
    }
    return static_cast<ULONG>(m_references);
}

HRESULT Object::GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) {
    Require(m_references > 0, "an object is asked for a name after its last release");
    m_desktop.CountLookUp();
    return m_isDead ? RPC_E_DISCONNECTED : m_desktop.LookUp(names[0], ids[0]);
}

HRESULT Object::Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT* result, EXCEPINFO*, UINT*) {
    Require(m_references > 0, "an object is invoked after its last release");
    Require(result->vt == VT_EMPTY && result->ullVal == 0, "a result begins with something in it");
    std::for_each(parameters->rgvarg, parameters->rgvarg + parameters->cArgs, ReadThrough);
    const HRESULT outcome = m_desktop.Answer(*this, id, *parameters, *result);
    Require(m_references > 0, "an object goes in the middle of its call");
    std::for_each(parameters->rgvarg, parameters->rgvarg + parameters->cArgs, ReadThrough);
    return outcome;
}

// The desktop.

Desktop::~Desktop() {
    handler = nullptr;
    onLetGo = nullptr;
    for (VARIANT& value : m_storage) {
        VariantClear(&value);
    }
    Require(OutstandingReferences() == 0, "an object is not released");
}

long Desktop::OutstandingReferences() const {
    long references = 0;
    for (const Object& object : m_objects) {
        references += object.References();
    }
    return references;
}

HRESULT Desktop::CreateApplication(void** object) {
    *object = nullptr;
    switch (TakeMood()) {
    case Mood::Fails:
        return Failure();
    case Mood::Throws:
        Throw();
    case Mood::AnyValue:
        return S_OK; // and no object
    default:
        *object = NewObject(L"Application").pdispVal;
        return S_OK;
    }
}

Desktop::Mood Desktop::TakeMood() {
    if (m_isGood) {
        return Mood::Good;
    }
    if (m_quietCalls > 0) {
        --m_quietCalls;
        return Mood::Good;
    }
    constexpr unsigned good = 128;
    constexpr unsigned moods = static_cast<unsigned>(Mood::HandlerRunsAtRelease) + 1;
    const unsigned byte = m_bytes.Byte();
    const Mood mood = byte < good ? Mood::Good : static_cast<Mood>((byte - good) % moods);
    if (mood == Mood::QuietFor) {
        m_quietCalls = m_bytes.Byte();
    }
    return mood;
}

void Desktop::CountLookUp() {
    if (++m_lookUps > mostCalls && !m_isGood) {
        Throw();
    }
}

HRESULT Desktop::LookUp(const std::wstring& method, DISPID& id) {
    const Mood mood = TakeMood();
    if (mood == Mood::LookupFails) {
        return Failure();
    }
    if (mood == Mood::LookupThrows) {
        Throw();
    }
    id = static_cast<DISPID>(m_calls.size());
    m_calls.push_back({method, mood});
    return S_OK;
}

HRESULT Desktop::Answer(Object& object, DISPID id, const DISPPARAMS& parameters, VARIANT& result) {
    const Call call = m_calls.at(static_cast<std::size_t>(id));
    switch (call.mood) {
    case Mood::Fails:
        return Failure();
    case Mood::FailsWithResult:
        result = AnyAnswer(object, call.method);
        return Failure();
    case Mood::ThrowsWithResult:
        result = AnyAnswer(object, call.method);
        Throw();
    case Mood::Throws:
        Throw();
    case Mood::AnyValue:
        result = AnyAnswer(object, call.method);
        return S_OK;
    case Mood::AnyValueWithCode:
        result = AnyAnswer(object, call.method);
        return static_cast<HRESULT>(Bits(4));
    case Mood::HandlerRuns:
        if (handler) {
            handler();
        }
        break;
    case Mood::HandlerRunsAtRelease:
        m_isHandlerDueAtRelease = true;
        break;
    case Mood::ObjectDies:
        object.Die();
        break;
    case Mood::AllObjectsDie:
        std::for_each(m_objects.begin(), m_objects.end(), [](Object& other) { other.Die(); });
        break;
    default:
        break;
    }
    result = GoodAnswer(object, call.method, parameters);
    return S_OK;
}

void Desktop::Throw() {
    ++m_throws;
    switch (m_bytes.Byte() % 3) {
    case 0:
        throw Complaint("the desktop has thrown");
    case 1:
        throw std::bad_alloc();
    default:
        throw 77;
    }
}

HRESULT Desktop::Failure() {
    const unsigned byte = m_bytes.Byte();
    return byte < std::size(failures) ? failures[byte] : static_cast<HRESULT>(Bits(4) | 0x80000000U);
}

void Desktop::LetGo() {
    if (m_isHandlerDueAtRelease && onLetGo) {
        m_isHandlerDueAtRelease = false;
        onLetGo();
    }
}

// Answers of a good desktop.

Desktop::Table Desktop::ListsByMethod() const {
    return {
        {L"GetSetups", Either<Names>(Trait::Bare, {}, {Either(Trait::ForeignNames, L"\u78C1", L"Setup1")})},
        {L"GetProperties", Either<Names>(Trait::HasBody, {L"SimTime", L"Rotor_X", L"Rotor_Psi"}, {L"SimTime"})},
        {L"GetPropNames",
         Either<Names>(Trait::PlainMaterials, {L"Material", L"Orientation"},
                       {L"Material", L"Solve Inside", L"Coordinate System", L"Magnetic Coercivity Components"})},
        {L"GetRelativeCoordinateSystems", Either<Names>(Trait::HasBody, {L"Obj_CS_Rotor"}, {})},
        {L"GetReportTraceNames", {L"Force_Rotor.Force_x"}},
        {L"GetMessages", {L"done"}},
    };
}

Desktop::Table Desktop::ChildrenByParent() const {
    return {
        {L"3D Modeler", {L"Magnet", L"Block"}},
        {L"Magnet", {L"Face"}},
        {L"Materials", Either<Names>(Trait::Bare, {}, {L"N45"})},
        {L"NewProject", {L"Veltrix3DDesign1"}},
        {L"OpenProject", {L"Veltrix3DDesign1"}},
        {L"Item", {L"Veltrix3DDesign1"}},
        {L"Paravant", Either<Names>(Trait::HasHistory, {L"KinoraHistory"}, {})},
        {L"Results", {L"Force_Rotor"}},
    };
}

VARIANT Desktop::GoodAnswer(const Object& object, const std::wstring& method, const DISPPARAMS& parameters) {
    static const Names makers = {
        L"GetAppDesktop",       L"NewProject", L"OpenProject",     L"GetProjects",     L"Item",
        L"GetDesign",           L"GetModule",  L"SetActiveDesign", L"SetActiveEditor", L"GetChildObject",
        L"GetDefinitionManager"};
    if (const auto list = m_lists.find(method); list != m_lists.end()) {
        return Texts(list->second);
    }
    if (method == L"GetChildNames") {
        const auto list = m_children.find(object.Name());
        return Texts(list == m_children.end() ? Names() : list->second);
    }
    if (std::find(makers.begin(), makers.end(), method) != makers.end()) {
        const std::wstring name = FirstText(parameters);
        const bool isProject = name.empty() || method == L"OpenProject";
        return NewObject(isProject ? method : name);
    }
    if (method == L"GetName") {
        return Text(Either(Trait::ForeignNames, L"M\u00E4gnets", L"Magnets"));
    }
    if (method == L"GetPath") {
        return Text(m_folder);
    }
    if (method == L"GetDesignType") {
        return Text(L"Veltrix 3D");
    }
    if (method == L"GetPropValue") {
        const std::wstring material = Either(Trait::ForeignNames, L"\u78C1", L"\"N45\"");
        return Text(FirstText(parameters) == L"Material" ? material : L"-890000");
    }
    if (method == L"Count") {
        return Of(VT_I4, 1);
    }
    if (method == L"GetRegistryString") {
        return Text(Either(Trait::NoReports, L"Never", L""));
    }
    if (method == L"Analyze") {
        return Of(VT_I4, 0);
    }
    return method == L"GetOutputVariableValue" ? Real(0.5) : VARIANT{};
}

VARIANT Desktop::NewObject(std::wstring name) {
    m_objects.emplace_back(*this, std::move(name));
    VARIANT value = Of(VT_DISPATCH, 0);
    value.pdispVal = &m_objects.back();
    value.pdispVal->AddRef();
    return value;
}

// Any answers.

VARIANT Desktop::AnyAnswer(const Object& self, const std::wstring& method) {
    if (method == L"GetAppDesktop") {
        const unsigned kind = m_bytes.Byte() % 4;
        return kind == 0 ? VARIANT{} : kind == 1 ? Of(VT_DISPATCH, 0) : ObjectFor(self);
    }
    const VARIANT value = AnyValue(self, 0);
    return (method == L"GetPath" || method == L"GetName") && value.vt == VT_BSTR ? PathOf(value, method) : value;
}

/// A text as a folder or a name that leads nowhere else.
VARIANT Desktop::PathOf(VARIANT text, const std::wstring& method) {
    std::wstring path = text.bstrVal ? std::wstring(text.bstrVal, SysStringLen(text.bstrVal)) : std::wstring();
    VariantClear(&text);
    const bool isFolder = method == L"GetPath";
    return Text(isFolder ? m_folder + path + (path == L".." || m_bytes.Byte() % 2 == 0 ? L"" : L"/") : path);
}

VARIANT Desktop::ObjectFor(const Object& self) {
    const unsigned choice = m_bytes.Byte();
    if (choice == 0) {
        return NewObject(self.Name());
    }
    Object& object = m_objects[choice % m_objects.size()];
    VARIANT value = Of(VT_DISPATCH, 0);
    value.pdispVal = choice == 1 ? const_cast<Object*>(&self) : &object;
    value.pdispVal->AddRef();
    return value;
}

VARIANT Desktop::AnyValue(const Object& self, int depth) {
    static constexpr VARTYPE numbers[] = {VT_I1,   VT_UI1, VT_UI2,  VT_UI4,   VT_I8,   VT_UI8,  VT_INT,
                                          VT_UINT, VT_R4,  VT_DATE, VT_ERROR, VT_BOOL, VT_NULL, VT_EMPTY};
    switch (m_bytes.Byte() % (depth < deepestValue ? 16U : 12U)) {
    case 0:
        return VARIANT{};
    case 1:
        return Of(VT_NULL, 0);
    case 2:
        return Of(VT_I4, Bits(4));
    case 3:
        return Of(VT_I2, Bits(2));
    case 4:
        return Of(VT_R8, Bits(8));
    case 5:
        return Of(numbers[m_bytes.Byte() % std::size(numbers)], Bits(8));
    case 6:
        return Text(Word());
    case 7:
        return Text(FreeText());
    case 8:
        return Of(VT_BSTR, 0);
    case 9:
        return ObjectFor(self);
    case 10: {
        VARIANT unknown = m_bytes.Byte() % 2 == 0 ? Of(VT_DISPATCH, 0) : ObjectFor(self);
        unknown.vt = unknown.pdispVal || m_bytes.Byte() % 2 == 0 ? VARTYPE{VT_UNKNOWN} : VARTYPE{VT_DISPATCH};
        return unknown;
    }
    case 11:
        return Of(invalidTypes[m_bytes.Byte() % std::size(invalidTypes)], Bits(8));
    case 12:
        return AnyReference(self, depth);
    case 13:
    case 14: {
        std::vector<std::wstring> texts(m_bytes.Byte() % 6U);
        std::generate(texts.begin(), texts.end(), [this] { return Word(); });
        return Texts(texts);
    }
    default:
        return AnyArray(self, depth);
    }
}

VARIANT Desktop::AnyArray(const Object& self, int depth) {
    static constexpr VARTYPE types[] = {VT_VARIANT, VT_VARIANT, VT_VARIANT, VT_BSTR, VT_R8, VT_I4, VT_UI1, VT_DISPATCH};
    static constexpr LONG lowerBounds[] = {0, 1, -3, 1000000, INT32_MIN};
    const VARTYPE type = types[m_bytes.Byte() % std::size(types)];
    const unsigned rank = m_bytes.Byte() % 5U;
    if (rank == 0) {
        return Array(nullptr, type);
    }
    std::vector<SAFEARRAYBOUND> bounds(rank < 3 ? 1 : rank - 1);
    for (SAFEARRAYBOUND& bound : bounds) {
        bound.lLbound = lowerBounds[m_bytes.Byte() % std::size(lowerBounds)];
        bound.cElements = m_bytes.Byte() % 5U;
    }
    constexpr unsigned largeArray = 250;
    if (m_bytes.Byte() >= largeArray) {
        bounds.front().cElements = 2000;
    }
    SAFEARRAY* const array = SafeArrayCreate(type, static_cast<UINT>(bounds.size()), bounds.data());
    std::size_t count = 1;
    for (const SAFEARRAYBOUND& bound : bounds) {
        count *= bound.cElements;
    }
    auto* const elements = static_cast<unsigned char*>(array->pvData);
    for (std::size_t index = 0; index < count && !m_bytes.AtEnd(); ++index) {
        FillElement(type, elements + index * SafeArrayGetElemsize(array), self, depth + 1);
    }
    return Array(array, type);
}

void Desktop::FillElement(VARTYPE type, void* element, const Object& self, int depth) {
    if (type == VT_VARIANT) {
        *static_cast<VARIANT*>(element) = AnyValue(self, depth);
    } else if (type == VT_BSTR) {
        *static_cast<BSTR*>(element) = Text(Word()).bstrVal;
    } else if (type == VT_DISPATCH) {
        *static_cast<IDispatch**>(element) = ObjectFor(self).pdispVal;
    } else {
        *static_cast<unsigned char*>(element) = static_cast<unsigned char>(m_bytes.Byte());
    }
}

/// A value that leads to another one, which stays the desktop's.
VARIANT Desktop::AnyReference(const Object& self, int depth) {
    const VARIANT value = AnyValue(self, depth + 1);
    m_storage.push_back(value);
    VARIANT& stored = m_storage.back();
    const bool isPlain = (stored.vt & VT_BYREF) == 0 && stored.vt != VT_EMPTY && stored.vt != VT_NULL;
    VARIANT reference{};
    reference.vt = static_cast<VARTYPE>(VT_BYREF | (isPlain ? stored.vt : VARTYPE{VT_VARIANT}));
    reference.byref = isPlain ? static_cast<void*>(&stored.llVal) : &stored;
    return reference;
}

std::wstring Desktop::Word() {
    return words[m_bytes.Byte() % std::size(words)];
}

/// Any characters, without the separators that would lead files elsewhere.
std::wstring Desktop::FreeText() {
    const unsigned length = m_bytes.Byte();
    constexpr unsigned longText = 200;
    if (length >= longText) {
        return std::wstring(std::size_t{1} << length % 16U, L'x');
    }
    std::wstring text;
    for (unsigned count = length % 16U; count > 0; --count) {
        const auto character = static_cast<wchar_t>(length < longText / 2 ? Bits(1) : Bits(4));
        text += character == L'/' ? L'|' : character;
    }
    return text;
}

std::uint64_t Desktop::Bits(int bytes) {
    std::uint64_t bits = 0;
    for (; bytes > 0; --bytes) {
        bits = bits << 8U | m_bytes.Byte();
    }
    return bits;
}

} // namespace hostile

#pragma once

#include "tests/fuzz/InputBytes.h"
#include "tests/support/DispatchBase.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace hostile {

/// Ends the process with these words when something does not hold: the fuzzer then keeps the input.
void Require(bool holds, const char* complaint);

/// What the desktop throws, beside numbers and std::bad_alloc.
struct Complaint : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Desktop;

/// One of the desktop's objects. It lives as long as the desktop, so that a call on a released one is seen.
class Object final : public DispatchBase {
public:
    Object(Desktop& desktop, std::wstring name) : m_desktop(desktop), m_name(std::move(name)) {}

    /// By which it was asked for.
    const std::wstring& Name() const { return m_name; }
    long References() const { return m_references; }
    /// From now on the object fails all calls, as one whose server has gone.
    void Die() { m_isDead = true; }

    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception, UINT* argumentError) override;

private:
    Desktop& m_desktop;
    std::wstring m_name;
    long m_references = 0;
    bool m_isDead = false;
};

/// A desktop whose answers are the input's choice.
///
/// The first byte tells what the desktop has already (`Trait`, a bit each). Every call then takes one byte, its mood:
/// below 128 it is answered as a good desktop answers it, so that an input that has ended makes a good desktop. Any
/// other says what goes wrong (`Mood`), and further bytes how.
///
/// Answers are proper values all the same: what a VARIANT says that it holds is there. One answer is kept within
/// limits, as the library takes it for an object without a look at its type: that of "GetAppDesktop".
class Desktop {
public:
    /// @param folder  that projects are in, with a separator at its end
    Desktop(InputBytes& bytes, std::wstring folder)
        : m_bytes(bytes), m_folder(std::move(folder)), m_traits(bytes.Byte()) {}
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;
    ~Desktop();

    /// What the class factory answers: an application, or whatever else the input wants.
    HRESULT CreateApplication(void** object);

    /// The host's turn, in the middle of a call.
    std::function<void()> handler;
    /// The host's turn, when an object's last reference goes.
    std::function<void()> onLetGo;

    /// While it is so, no call goes wrong or takes a byte.
    void BeGood(bool isGood) { m_isGood = isGood; }
    /// How many exceptions it has thrown.
    unsigned Throws() const { return m_throws; }
    std::deque<Object>& Objects() { return m_objects; }

private:
    friend class Object;

    /// What comes of a call. A result may be written although the call fails or throws.
    enum class Mood {
        Good,
        LookupFails,
        LookupThrows,
        Fails,
        FailsWithResult,
        Throws,
        ThrowsWithResult,
        HandlerRuns,
        AnyValue,
        AnyValueWithCode,
        ObjectDies,
        AllObjectsDie,
        /// Good, and so are as many calls as the next byte says.
        QuietFor,
        /// Good, and the handler runs when an object's last reference goes next time.
        HandlerRunsAtRelease
    };
    enum class Trait : unsigned {
        ForeignNames = 1,
        HasBody = 2,
        HasHistory = 4,
        PlainMaterials = 8,
        NoReports = 16,
        Bare = 32
    };
    using Names = std::vector<std::wstring>;
    using Table = std::map<std::wstring, Names>;
    struct Call {
        std::wstring method;
        Mood mood;
    };

    Mood TakeMood();
    void CountLookUp();
    HRESULT LookUp(const std::wstring& method, DISPID& id);
    HRESULT Answer(Object& object, DISPID id, const DISPPARAMS& parameters, VARIANT& result);
    [[noreturn]] void Throw();
    HRESULT Failure();
    long OutstandingReferences() const;
    void LetGo();

    /// What the desktop answers with a trait, and without it.
    template <class Answer>
    Answer Either(Trait trait, Answer with, Answer without) const {
        return m_traits & static_cast<unsigned>(trait) ? with : without;
    }
    std::wstring Either(Trait trait, const wchar_t* with, const wchar_t* without) const {
        return m_traits & static_cast<unsigned>(trait) ? with : without;
    }
    Table ListsByMethod() const;
    Table ChildrenByParent() const;
    VARIANT GoodAnswer(const Object& object, const std::wstring& method, const DISPPARAMS& parameters);
    VARIANT NewObject(std::wstring name);
    /// The object itself, another one, or a new one.
    VARIANT ObjectFor(const Object& self);
    /// A value of any kind, for the caller to clear.
    VARIANT AnyAnswer(const Object& self, const std::wstring& method);
    VARIANT PathOf(VARIANT text, const std::wstring& method);
    VARIANT AnyValue(const Object& self, int depth);
    VARIANT AnyArray(const Object& self, int depth);
    VARIANT AnyReference(const Object& self, int depth);
    void FillElement(VARTYPE type, void* element, const Object& self, int depth);
    std::wstring Word();
    std::wstring FreeText();
    std::uint64_t Bits(int bytes);

    InputBytes& m_bytes;
    std::wstring m_folder;
    unsigned m_traits;
    /// What a good desktop's lists hold.
    Table m_lists = ListsByMethod();
    Table m_children = ChildrenByParent();
    std::deque<Object> m_objects;
    std::vector<Call> m_calls;
    /// What VT_BYREF values lead to.
    std::deque<VARIANT> m_storage;
    unsigned m_quietCalls = 0;
    unsigned m_lookUps = 0;
    unsigned m_throws = 0;
    bool m_isGood = false;
    bool m_isHandlerDueAtRelease = false;
};

} // namespace hostile

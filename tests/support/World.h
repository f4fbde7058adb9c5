#pragma once

#include "tests/support/VariantTree.h"

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace fake {

class Object;

/// What a call gives back: an HRESULT, and what to write into the result VARIANT (which may come with a failure too).
struct Answer {
    HRESULT code = S_OK;
    std::function<void(VARIANT&)> fill;
};

/// @name Answers
/// @{
Answer Nothing();
Answer Text(const std::wstring& text);
/// An array of VARIANTs that hold texts.
Answer Texts(const std::vector<std::wstring>& texts);
/// An array of VARIANTs with any contents; a lower bound other than 0 is possible.
Answer Items(const std::vector<Answer>& items, LONG lowerBound = 0);
/// VT_ARRAY | VT_BSTR, which is not what a list of texts is in this interface.
Answer TextArray(const std::vector<std::wstring>& texts);
Answer Long(std::int32_t number);
Answer Int(std::int32_t number);
Answer Real(double number);
Answer Flag(VARIANT_BOOL raw);
/// One more reference on the object, for the caller.
Answer Reference(Object& object);
/// VT_DISPATCH with a null pointer.
Answer NoObject();
/// A VARIANT of this type with these eight bytes in its value field.
Answer Raw(VARTYPE type, std::uint64_t bits);
Answer Fails(HRESULT code = DISP_E_EXCEPTION);
/// A failure that has written a result all the same.
Answer FailsWith(const Answer& result, HRESULT code = DISP_E_EXCEPTION);
/// @}

/// What happens to one call, counted over all objects, in place of its regular answer.
struct Fault {
    /// Non-zero: the name is not found.
    HRESULT lookup = S_OK;
    /// Given in place of the regular answer. When it is no failure, the desktop does what it was told all the same.
    Answer answer;
};

/// While one lives, this thread is inside of the fake desktop: what it allocates is not the library's.
class InsideDesktop {
public:
    InsideDesktop();
    ~InsideDesktop();
    InsideDesktop(const InsideDesktop&) = delete;
    InsideDesktop& operator=(const InsideDesktop&) = delete;
    static bool Is();
};

/// One line of the journal.
struct Entry {
    enum class Kind { NameUnknown, NameKnown, Called, CallFailed };
    Kind kind;
    std::string object;
    std::string method;
    Arguments arguments;
};

/// Everything that the fake desktop's objects saw: their journal, the rules of the game that were broken, and the
/// objects themselves, which live until the world ends so that a call on a released one is seen and not a crash.
///
/// The destructor reports broken rules, leaked references and references released too often as test failures.
class World {
public:
    World();
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    /// A new object, known under this path in the journal. Nobody holds a reference on it yet.
    Object& Make(const std::string& path);
    /// A new object on which the test holds one reference until the world ends.
    Object& MakeHeld(const std::string& path);

    /// The journal as text; see Transcript.h.
    std::string Journal() const;
    const std::vector<Entry>& Entries() const { return m_entries; }
    void ClearJournal() { m_entries.clear(); }
    /// Calls of this method in the journal, on whichever object.
    std::size_t Count(const std::string& method) const;

    /// Calls counted from here on, starting with 1; every lookup begins a call.
    std::size_t CallNumber() const { return m_callNumber; }
    void RestartCallNumbers() { m_callNumber = 0; }
    void Inject(std::size_t callNumber, const Fault& fault) { m_faults[callNumber] = fault; }
    /// The desktop's process ends: this call and all later ones find no names any more.
    void Die(std::size_t callNumber, HRESULT code) {
        m_deathNumber = callNumber;
        m_death.lookup = code;
    }
    void ClearFaults() {
        m_faults.clear();
        m_deathNumber = 0;
    }
    /// True when a fault of `Inject` or `Die` was reached since.
    bool FaultHit() const { return m_faultHit; }
    /// Called at the begin of every invocation, after its arguments were recorded.
    std::function<void(const Entry&)> observer;
    /// Called when callers have let go of an object's last reference.
    std::function<void(const Object&)> onLetGo;

    /// Broken rules and wrong balances up to now, one line each; they are then forgotten.
    std::vector<std::string> TakeProblems();
    /// References that callers hold on all objects together (those of `MakeHeld` not counted).
    long OutstandingReferences() const;
    const std::vector<std::unique_ptr<Object>>& Objects() const { return m_objects; }

private:
    friend class Object;

    void Report(const std::string& problem) { m_problems.push_back(problem); }
    /// Begins a call and gives its fault, if one is planned.
    const Fault* BeginCall();

    std::vector<std::unique_ptr<Object>> m_objects;
    std::vector<Entry> m_entries;
    std::vector<std::string> m_problems;
    std::map<std::size_t, Fault> m_faults;
    Fault m_death;
    /// 0 for a desktop that lives.
    std::size_t m_deathNumber = 0;
    std::size_t m_callNumber = 0;
    bool m_faultHit = false;
};

} // namespace fake

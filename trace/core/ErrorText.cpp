#include "trace/core/ErrorText.h"

#include "interface/KinoraVeltrixScriptErrors.h"

#include <map>

namespace kinora::trace {

std::string HResultText(std::uint32_t code) {
    static const std::map<std::uint32_t, const char*> texts = {
        {0x00000000, "S_OK"},
        {0x00000001, "S_FALSE"},
        {0x80004001, "E_NOTIMPL: not implemented"},
        {0x80004002, "E_NOINTERFACE: no such interface"},
        {0x80004003, "E_POINTER: a pointer is null"},
        {0x80004004, "E_ABORT: aborted"},
        {0x80004005, "E_FAIL: unspecified error"},
        {0x8000FFFF, "E_UNEXPECTED: unexpected error"},
        {0x80010001, "RPC_E_CALL_REJECTED: the other program is busy"},
        {0x8001000D, "RPC_E_CANTCALLOUT_ININPUTSYNCCALL: a call out is not possible now"},
        {0x8001010A, "RPC_E_SERVERCALL_RETRYLATER: the other program is busy, try later"},
        {0x8001010E, "RPC_E_WRONG_THREAD: called from another thread than the object's"},
        {0x80010105, "RPC_E_SERVERFAULT: the other program crashed in the call"},
        {0x80010108, "RPC_E_DISCONNECTED: the object has left its clients"},
        {0x80020001, "DISP_E_UNKNOWNINTERFACE: unknown interface"},
        {0x80020003, "DISP_E_MEMBERNOTFOUND: no such member"},
        {0x80020004, "DISP_E_PARAMNOTFOUND: no such parameter"},
        {0x80020005, "DISP_E_TYPEMISMATCH: an argument has a wrong type"},
        {0x80020006, "DISP_E_UNKNOWNNAME: unknown name"},
        {0x80020007, "DISP_E_NONAMEDARGS: named arguments are not possible"},
        {0x80020008, "DISP_E_BADVARTYPE: an argument's type is not valid"},
        {0x80020009, "DISP_E_EXCEPTION: the object reported an error"},
        {0x8002000A, "DISP_E_OVERFLOW: out of range"},
        {0x8002000B, "DISP_E_BADINDEX: no such index"},
        {0x8002000C, "DISP_E_UNKNOWNLCID: unknown locale"},
        {0x8002000D, "DISP_E_ARRAYISLOCKED: the array is locked"},
        {0x8002000E, "DISP_E_BADPARAMCOUNT: wrong number of arguments"},
        {0x8002000F, "DISP_E_PARAMNOTOPTIONAL: an argument is missing"},
        {0x80040111, "CLASS_E_CLASSNOTAVAILABLE: the server lacks the class"},
        {0x80040154, "REGDB_E_CLASSNOTREG: the class is not registered"},
        {0x800401F3, "CO_E_CLASSSTRING: the ProgID is not registered"},
        {0x80070005, "E_ACCESSDENIED: access denied"},
        {0x8007000E, "E_OUTOFMEMORY: out of memory"},
        {0x80070057, "E_INVALIDARG: an argument is not valid"},
        {0x800706B5, "RPC_S_UNKNOWN_IF: the other program is gone"},
        {0x800706BA, "RPC_S_SERVER_UNAVAILABLE: the other program is gone"},
        {0x800706BE, "RPC_S_CALL_FAILED: the other program ended during the call"},
        {0x80080005, "CO_E_SERVER_EXEC_FAILURE: the other program does not start"},
    };
    const auto found = texts.find(code);
    return found == texts.end() ? std::string() : found->second;
}

std::string HResultNumber(std::uint32_t code) {
    std::string text = "0x00000000";
    for (std::size_t digit = text.size() - 1; digit > 1; --digit, code >>= 4) {
        text[digit] = "0123456789ABCDEF"[code & 15U];
    }
    return text;
}

std::string ScriptErrorText(std::uint32_t code) {
    constexpr std::uint32_t interfaceFacility = 0x80040000;
    if ((code & 0xFFFF0000) != interfaceFacility) {
        return {};
    }
    const char* const text = GetKinoraVeltrixScriptErrorText(static_cast<std::int32_t>(code & 0xFFFF));
    return text == nullptr ? std::string() : text;
}

} // namespace kinora::trace

#include "capi/DesktopAnswer.h"

#include "programs/Utf.h"

#include <algorithm>
#include <cstdio>

namespace kinora::capi {
namespace {

/// Errors of remote procedure calls of the system itself, 1722 and 1726.
constexpr HRESULT serverUnavailable = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_WIN32, 1722);
constexpr HRESULT callFailed = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_WIN32, 1726);

template <std::size_t count>
bool IsOneOf(HRESULT code, const HRESULT (&codes)[count]) {
    return std::find(std::begin(codes), std::end(codes), code) != std::end(codes);
}

} // namespace

bool IsBusy(HRESULT code) {
    return IsOneOf(code, {RPC_E_CALL_REJECTED, RPC_E_SERVERCALL_RETRYLATER, RPC_E_SERVERCALL_REJECTED});
}

Error DesktopIsBusy() {
    return {KV_BUSY, "the desktop is busy and turned a call away.",
            "Close its dialogs, or let what it is at end; kv_options::busy_wait_ms says how long it is waited for."};
}

bool IsGone(HRESULT code) {
    return IsOneOf(code, {serverUnavailable, callFailed, RPC_E_DISCONNECTED, RPC_E_SERVER_DIED, CO_E_OBJNOTCONNECTED});
}

Error DesktopIsGone() {
    return {KV_FAILED, "the desktop has ended, or cannot be reached any more.",
            "kv_release, then kv_launch starts another one; open the project again."};
}

std::string CauseOf(const Dispatch::Refusal& refusal) {
    if (refusal.method[0] == L'\0') {
        return "the desktop gave something else than what it was asked for.";
    }
    char code[16];
    std::snprintf(code, sizeof(code), "0x%08lX", static_cast<unsigned long>(refusal.code) & 0xFFFFFFFFUL);
    const std::string method = "\"" + programs::Utf8FromWide(refusal.method) + "\"";
    return refusal.code == DISP_E_UNKNOWNNAME ? "an object of the desktop has no method " + method + "."
                                              : "the desktop refused " + method + " (" + code + ").";
}

} // namespace kinora::capi

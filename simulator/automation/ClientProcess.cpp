#include "simulator/automation/ClientProcess.h"

#include <windows.h>

#include <objbase.h>

#include <memory>
#include <rpc.h>

namespace vantor::automation {
namespace {

/// The process whose call this thread is serving; 0 when it cannot be told (another machine, this very process).
unsigned long CallingProcess() {
    using Inquire = RPC_STATUS(RPC_ENTRY*)(RPC_BINDING_HANDLE, unsigned long*);
    const HMODULE runtime = GetModuleHandleW(L"rpcrt4.dll");
    const FARPROC found = runtime != nullptr ? GetProcAddress(runtime, "I_RpcBindingInqLocalClientPID") : nullptr;
    // By way of void*: the compiler warns about a direct cast between function types.
    const auto inquire = reinterpret_cast<Inquire>(reinterpret_cast<void*>(found));
    unsigned long process = 0;
    if (!inquire || inquire(nullptr, &process) != RPC_S_OK || process == GetCurrentProcessId()) {
        return 0;
    }
    return process;
}

} // namespace

Clients::HasEnded WatchCallingProcess() {
    const unsigned long id = CallingProcess();
    const HANDLE handle = id != 0 ? OpenProcess(SYNCHRONIZE, FALSE, id) : nullptr;
    if (!handle) {
        return {};
    }
    const std::shared_ptr<void> process(handle, CloseHandle);
    return [process] { return WaitForSingleObject(process.get(), 0) == WAIT_OBJECT_0; };
}

void ReclaimDead(Clients& clients) {
    for (IUnknown* object : clients.ObjectsOfTheDead()) {
        CoDisconnectObject(object, 0);
        object->Release();
    }
}

} // namespace vantor::automation

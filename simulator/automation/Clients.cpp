#include "simulator/automation/Clients.h"

#include <windows.h>

#include <objbase.h>

#include <algorithm>
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

/// False also for a process that the system did not tell.
bool HasEnded(HANDLE process) {
    return process != nullptr && WaitForSingleObject(process, 0) == WAIT_OBJECT_0;
}

} // namespace

void Clients::HandleCloser::operator()(void* handle) const {
    CloseHandle(handle);
}

void Clients::Watch(const void* client) {
    const unsigned long process = CallingProcess();
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_clients[client].process.reset(process != 0 ? OpenProcess(SYNCHRONIZE, FALSE, process) : nullptr);
}

void Clients::Add(const void* client, ClientObject* object) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_clients[client].objects.insert(object);
}

void Clients::Remove(const void* client, ClientObject* object) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto entry = m_clients.find(client);
    if (entry == m_clients.end()) {
        return;
    }
    entry->second.objects.erase(object);
    if (entry->second.objects.empty()) {
        m_clients.erase(entry);
    }
}

int Clients::CountOthers(const void* client) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return static_cast<int>(std::count_if(m_clients.begin(), m_clients.end(), [client](const auto& entry) {
        return entry.first != client && !HasEnded(entry.second.process.get());
    }));
}

std::vector<IUnknown*> Clients::ObjectsOfTheDead() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<IUnknown*> identities;
    for (const auto& entry : m_clients) {
        if (!HasEnded(entry.second.process.get())) {
            continue;
        }
        for (ClientObject* object : entry.second.objects) {
            if (object->TryAddRef()) {
                identities.push_back(object->Identity());
            }
        }
    }
    return identities;
}

void Clients::ReclaimDead() {
    for (IUnknown* object : ObjectsOfTheDead()) {
        CoDisconnectObject(object, 0);
        object->Release();
    }
}

} // namespace vantor::automation

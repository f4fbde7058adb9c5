#include "simulator/automation/Clients.h"

#include <windows.h>

#include <objbase.h>

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

Clients::~Clients() {
    for (const auto& entry : m_processes) {
        CloseHandle(entry.second);
    }
}

void Clients::Watch(const void* client) {
    const unsigned long process = CallingProcess();
    const HANDLE handle = process != 0 ? OpenProcess(SYNCHRONIZE, FALSE, process) : nullptr;
    if (!handle) {
        return;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_processes.emplace(client, handle);
}

void Clients::Add(const void* client, ClientObject* object) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_objects[client].insert(object);
}

void Clients::Remove(const void* client, ClientObject* object) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto objects = m_objects.find(client);
    if (objects == m_objects.end()) {
        return;
    }
    objects->second.erase(object);
    if (!objects->second.empty()) {
        return;
    }
    m_objects.erase(objects);
    if (const auto process = m_processes.find(client); process != m_processes.end()) {
        CloseHandle(process->second);
        m_processes.erase(process);
    }
}

std::vector<const void*> Clients::TakeDeadClients() {
    std::vector<const void*> dead;
    for (auto entry = m_processes.begin(); entry != m_processes.end();) {
        if (WaitForSingleObject(entry->second, 0) == WAIT_OBJECT_0) {
            dead.push_back(entry->first);
            CloseHandle(entry->second);
            entry = m_processes.erase(entry);
        } else {
            ++entry;
        }
    }
    return dead;
}

std::vector<IUnknown*> Clients::TakeObjectsOf(const std::vector<const void*>& clients) {
    std::vector<IUnknown*> identities;
    for (const void* client : clients) {
        for (ClientObject* object : m_objects[client]) {
            if (object->TryAddRef()) {
                identities.push_back(object->Identity());
            }
        }
    }
    return identities;
}

int Clients::ReclaimDead() {
    std::vector<const void*> dead;
    std::vector<IUnknown*> objects;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        dead = TakeDeadClients();
        objects = TakeObjectsOf(dead);
    }
    for (IUnknown* object : objects) {
        CoDisconnectObject(object, 0);
        object->Release();
    }
    return static_cast<int>(dead.size());
}

} // namespace vantor::automation

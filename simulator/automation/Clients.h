#pragma once

#include <oaidl.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <vector>

namespace vantor::automation {

/// A dispatch object as the registry of clients sees it.
class ClientObject {
public:
    /// Takes a reference unless the object is about to go.
    virtual bool TryAddRef() = 0;

    /// The object's identity; no reference is taken.
    virtual IUnknown* Identity() = 0;

protected:
    ~ClientObject() = default;
};

/// Which process holds which objects, so that what a process holds can be taken back when it dies: the system's own
/// housekeeping takes minutes, or never does it.
///
/// Safe to use from any thread.
class Clients {
public:
    ~Clients();

    /// Watches the process that is calling now, as far as the system tells which one it is. Processes are watched once
    /// each; `client` tells the client's objects from others.
    void Watch(const void* client);

    void Add(const void* client, ClientObject* object);
    void Remove(const void* client, ClientObject* object);

    /// Takes back what dead processes held.
    /// @return number of clients that were taken back.
    int ReclaimDead();

private:
    std::vector<IUnknown*> TakeObjectsOf(const std::vector<const void*>& clients);
    std::vector<const void*> TakeDeadClients();

    std::mutex m_mutex;
    std::map<const void*, HANDLE> m_processes;
    std::map<const void*, std::set<ClientObject*>> m_objects;
};

} // namespace vantor::automation

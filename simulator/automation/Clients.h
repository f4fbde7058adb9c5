#pragma once

#include <oaidl.h>

#include <map>
#include <memory>
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
    /// Watches the process that is calling now, as far as the system tells which one it is. `client` tells the client's
    /// objects from others.
    /// @pre the client holds an object
    void Watch(const void* client);

    void Add(const void* client, ClientObject* object);
    void Remove(const void* client, ClientObject* object);

    /// How many clients other than this one hold objects. Those whose process has died do not count.
    int CountOthers(const void* client) const;

    /// Takes back what dead processes held.
    void ReclaimDead();

private:
    struct HandleCloser {
        void operator()(void* handle) const;
    };
    struct Client {
        /// Null where the system does not tell the process.
        std::unique_ptr<void, HandleCloser> process;
        std::set<ClientObject*> objects;
    };

    std::vector<IUnknown*> ObjectsOfTheDead();

    mutable std::mutex m_mutex;
    /// Those that hold objects.
    std::map<const void*, Client> m_clients;
};

} // namespace vantor::automation

#pragma once

#include <oaidl.h>

#include <functional>
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

/// Which client holds which objects, so that what it holds can be taken back when its process dies: the system's own
/// housekeeping takes minutes, or never does it.
///
/// Safe to use from any thread.
class Clients {
public:
    /// True once a client's process has ended.
    using HasEnded = std::function<bool()>;

    /// Tells how to find out that a client has died. `client` tells the client's objects from others.
    /// @param hasEnded  empty when nobody can tell
    /// @pre the client holds an object
    void Watch(const void* client, HasEnded hasEnded);

    void Add(const void* client, ClientObject* object);
    void Remove(const void* client, ClientObject* object);

    /// How many clients other than this one hold objects. Those whose process has died do not count.
    int CountOthers(const void* client) const;

    /// What dead clients hold; the caller owns one reference to each.
    std::vector<IUnknown*> ObjectsOfTheDead();

private:
    struct Client {
        HasEnded hasEnded;
        std::set<ClientObject*> objects;

        bool IsDead() const { return hasEnded && hasEnded(); }
    };

    mutable std::mutex m_mutex;
    /// Those that hold objects.
    std::map<const void*, Client> m_clients;
};

} // namespace vantor::automation

#pragma once

#include "simulator/automation/Clients.h"
#include "simulator/automation/Lifetime.h"
#include "simulator/commands/Value.h"
#include "simulator/model/Desktop.h"

#include <oaidl.h>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace vantor::automation {

/// What all dispatch objects of one desktop share, and keep. Calls arrive on any thread and run one after the other.
class Server : public std::enable_shared_from_this<Server> {
public:
    /// Begins to watch the process that is calling.
    using WatchCaller = std::function<Clients::HasEnded()>;

    /// @param idleTime     how long the desktop stays without clients; none when only a client makes it leave
    /// @param watchCaller  empty where all clients live in this process
    explicit Server(std::shared_ptr<model::Desktop> desktop, std::optional<std::chrono::seconds> idleTime = {},
                    WatchCaller watchCaller = {})
        : m_desktop(std::move(desktop)), m_lifetime(idleTime), m_watchCaller(std::move(watchCaller)) {}

    Lifetime& ItsLifetime() { return m_lifetime; }
    Clients& ItsClients() { return m_clients; }

    /// Held while a command runs.
    std::mutex& CommandMutex() { return m_commandMutex; }

    /// The application object of a new client; the caller owns one reference. Null when the server is leaving.
    IDispatch* NewClient();

    /// @param action run when the server is to leave, with a command running. Set it before clients come.
    void OnQuit(std::function<void()> action) { m_onQuit = std::move(action); }

    /// A client asks the desktop to leave. When others use it, it stays, and a message says so.
    /// @param client the identity of its session
    /// @pre   the caller holds the command mutex
    void Quit(const void* client);

private:
    int CountOthersOrQuit(const void* client);

    std::shared_ptr<model::Desktop> m_desktop;
    Lifetime m_lifetime;
    Clients m_clients;
    const WatchCaller m_watchCaller;
    std::function<void()> m_onQuit;
    std::mutex m_commandMutex;
    /// Held while a client comes in, so that a quit counts it or keeps it out; taken after the command mutex.
    std::mutex m_arrivalMutex;
};

} // namespace vantor::automation

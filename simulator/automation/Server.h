#pragma once

#include "simulator/automation/Clients.h"
#include "simulator/automation/Lifetime.h"
#include "simulator/commands/Value.h"
#include "simulator/model/Desktop.h"

#include <oaidl.h>

#include <memory>
#include <mutex>

namespace vantor::automation {

/// What all dispatch objects of one desktop share. Calls arrive on any thread and run one after the other.
class Server {
public:
    Server(std::shared_ptr<model::Desktop> desktop, std::chrono::seconds idleTime)
        : m_desktop(std::move(desktop)), m_lifetime(idleTime) {}

    Lifetime& ItsLifetime() { return m_lifetime; }
    Clients& ItsClients() { return m_clients; }

    /// Held while a command runs.
    std::mutex& CommandMutex() { return m_commandMutex; }

    /// The application object of a new client; the caller owns one reference.
    IDispatch* NewClient();

private:
    std::shared_ptr<model::Desktop> m_desktop;
    Lifetime m_lifetime;
    Clients m_clients;
    std::mutex m_commandMutex;
};

} // namespace vantor::automation

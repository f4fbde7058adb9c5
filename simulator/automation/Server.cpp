#include "simulator/automation/Server.h"

#include "simulator/automation/DispatchObject.h"
#include "simulator/commands/Application.h"
#include "simulator/commands/Session.h"

namespace vantor::automation {
namespace {

/// A session that asks its server to leave.
class ClientSession final : public commands::Session {
public:
    ClientSession(Server& server, std::shared_ptr<model::Desktop> desktop)
        : Session(std::move(desktop), [this, &server] { server.Quit(static_cast<const Session*>(this)); }) {}
};

} // namespace

IDispatch* Server::NewClient() {
    const std::lock_guard<std::mutex> lock(m_arrivalMutex);
    if (m_lifetime.IsQuitting()) {
        return nullptr;
    }
    const commands::SessionPointer session = std::make_shared<ClientSession>(*this, m_desktop);
    IDispatch* application = MakeDispatchObject(shared_from_this(), commands::MakeApplication(session));
    if (m_watchCaller) {
        m_clients.Watch(session.get(), m_watchCaller());
    }
    return application;
}

int Server::CountOthersOrQuit(const void* client) {
    const std::lock_guard<std::mutex> lock(m_arrivalMutex);
    const int others = m_clients.CountOthers(client);
    if (others == 0) {
        m_lifetime.RequestQuit();
    }
    return others;
}

void Server::Quit(const void* client) {
    const int others = CountOthersOrQuit(client);
    if (others > 0) {
        m_desktop->messages.Add({"", "", model::Severity::Info,
                                 "QuitApplication: the desktop stays open, " +
                                     (others == 1 ? std::string("1 other client uses it.")
                                                  : std::to_string(others) + " other clients use it.")});
    } else if (m_onQuit) {
        // Not under the mutex: closing the door may wait for those who stand in it.
        m_onQuit();
    }
}

} // namespace vantor::automation

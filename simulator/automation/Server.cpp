#include "simulator/automation/Server.h"

#include "simulator/automation/DispatchObject.h"
#include "simulator/commands/Application.h"
#include "simulator/commands/Session.h"

namespace vantor::automation {

IDispatch* Server::NewClient() {
    const auto session = std::make_shared<commands::Session>(m_desktop, [this] { m_lifetime.RequestQuit(); });
    IDispatch* application = MakeDispatchObject(*this, commands::MakeApplication(session));
    m_clients.Watch(session.get());
    return application;
}

} // namespace vantor::automation

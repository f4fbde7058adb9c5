#pragma once

#include "simulator/model/Desktop.h"

#include <functional>
#include <memory>

namespace vantor::commands {

/// One client of the desktop: what its objects share. It ends when the last of them is released.
class Session {
public:
    /// @param quit is called when the client asks the desktop to leave.
    Session(std::shared_ptr<model::Desktop> desktop, std::function<void()> quit)
        : m_desktop(std::move(desktop)), m_quit(std::move(quit)) {}

    model::Desktop& TheDesktop() const { return *m_desktop; }
    void Quit() const { m_quit(); }

private:
    std::shared_ptr<model::Desktop> m_desktop;
    std::function<void()> m_quit;
};

using SessionPointer = std::shared_ptr<Session>;

/// True when another client that is still there has changed the project and not saved it.
bool IsChangedByOther(const model::Project& project, const SessionPointer& session);

} // namespace vantor::commands

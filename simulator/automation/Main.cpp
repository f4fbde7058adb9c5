#include "programs/Main.h"

#include "programs/ExitStatus.h"
#include "programs/Paths.h"
#include "programs/Print.h"
#include "programs/Utf.h"
#include "simulator/analysis/FieldExport.h"
#include "simulator/automation/ClassFactory.h"
#include "simulator/automation/ClassIds.h"
#include "simulator/automation/ClientProcess.h"
#include "simulator/automation/CommandLine.h"
#include "simulator/automation/DesktopSetup.h"
#include "simulator/automation/Registration.h"
#include "simulator/automation/Server.h"
#include "simulator/model/DesktopError.h"
#include "simulator/model/Files.h"
#include "simulator/model/ProjectFile.h"
#include "simulator/model/ProjectListing.h"

#include <windows.h>

#include <objbase.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <fcntl.h>
#include <io.h>

namespace {

using namespace vantor;
using kinora::programs::ExitStatus;
using kinora::programs::Utf8FromWide;
using kinora::programs::WideFromUtf8;

void Print(std::FILE* stream, const std::wstring& text) {
    kinora::programs::Print(stream, Utf8FromWide(text));
}

/// Keeps the factory's interface ready for calls. Wine otherwise readies it for every client anew, takes that back when
/// the client lets go, and may then wait without end for a call that is over already: the launch would stand still.
class StandingFactory {
public:
    explicit StandingFactory(IClassFactory* factory) {
        if (SUCCEEDED(CreateStreamOnHGlobal(nullptr, TRUE, &m_stream)) &&
            FAILED(CoMarshalInterface(m_stream, IID_IClassFactory, factory, MSHCTX_LOCAL, nullptr,
                                      MSHLFLAGS_TABLESTRONG))) {
            m_stream->Release();
            m_stream = nullptr;
        }
    }
    ~StandingFactory() {
        if (!m_stream) {
            return;
        }
        m_stream->Seek({}, STREAM_SEEK_SET, nullptr);
        CoReleaseMarshalData(m_stream);
        m_stream->Release();
    }
    StandingFactory(const StandingFactory&) = delete;
    StandingFactory& operator=(const StandingFactory&) = delete;

private:
    IStream* m_stream = nullptr;
};

/// The door through which new clients come.
class ClientDoor {
public:
    explicit ClientDoor(IClassFactory* factory)
        : m_standing(factory), m_status(CoRegisterClassObject(automation::simulatorClassId, factory,
                                                              CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE, &m_cookie)),
          m_isOpen(SUCCEEDED(m_status)) {}
    ~ClientDoor() { Close(); }
    ClientDoor(const ClientDoor&) = delete;
    ClientDoor& operator=(const ClientDoor&) = delete;

    HRESULT Status() const { return m_status; }

    /// From now on the system starts another server for a new client. Safe to call from any thread, and again.
    void Close() {
        if (m_isOpen.exchange(false)) {
            CoRevokeClassObject(m_cookie);
        }
    }

private:
    StandingFactory m_standing;
    DWORD m_cookie = 0;
    const HRESULT m_status;
    std::atomic<bool> m_isOpen;
};

/// Waits until the server may leave. New clients are turned away first, then what they hold is waited for.
void WaitUntilDone(automation::Server& server, ClientDoor& door) {
    const auto mayLeave = [&] { return server.ItsLifetime().MayLeave(automation::Lifetime::Clock::now()); };
    for (;;) {
        if (mayLeave()) {
            door.Close();
            // No client has come in between.
            if (mayLeave()) {
                return;
            }
        }
        automation::ReclaimDead(server.ItsClients());
        Sleep(100);
    }
}

/// Lets go of the standard streams. Where a server gets those of the client that starts it, whoever reads them to their
/// end would wait for the server too.
void LeaveStandardStreams() {
    struct Stream {
        std::FILE* file;
        const char* mode;
        DWORD handle;
    };
    for (const Stream& stream : {Stream{stdin, "r", STD_INPUT_HANDLE}, Stream{stdout, "w", STD_OUTPUT_HANDLE},
                                 Stream{stderr, "w", STD_ERROR_HANDLE}}) {
        if (std::freopen("NUL", stream.mode, stream.file)) {
            // NOLINTNEXTLINE(performance-no-int-to-ptr): the run-time library gives handles as numbers
            SetStdHandle(stream.handle, reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream.file))));
        }
    }
}

ExitStatus Serve(const automation::CommandLine& line) {
    if (line.isEmbedded) {
        LeaveStandardStreams();
        FreeConsole(); // a window of which the user knows nothing, and whose end would be the server's
    }
    // Clients' calls arrive on threads of the system; commands are put in order by the server itself.
    if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {
        return ExitStatus::Failed;
    }
    const auto server = std::make_shared<automation::Server>(automation::SetUpDesktop(line.updateReports),
                                                             line.idleTime, automation::WatchCallingProcess);
    IClassFactory* factory = automation::MakeClassFactory([server] { return server->NewClient(); },
                                                          [server](bool lock) {
                                                              if (lock) {
                                                                  server->ItsLifetime().AddObject();
                                                              } else {
                                                                  server->ItsLifetime().RemoveObject();
                                                              }
                                                          });
    HRESULT status = S_OK;
    {
        ClientDoor door(factory);
        status = door.Status();
        // A client that launches right after another one's quit must not meet the leaving server.
        server->OnQuit([&door] { door.Close(); });
        if (SUCCEEDED(status)) {
            WaitUntilDone(*server, door);
        }
    }
    factory->Release();
    CoUninitialize();
    return SUCCEEDED(status) ? ExitStatus::Done : ExitStatus::Failed;
}

void ExportActiveDesign(const automation::CommandLine& line) {
    const auto project = model::OpenProjectFile(kinora::programs::AbsolutePath(line.project));
    const auto design = project->FindDesign(project->activeDesign);
    if (!design) {
        throw model::DesktopError(model::ErrorCode::NoActiveDesign, "the project has no active design");
    }
    model::WriteWholeFile(line.output,
                          analysis::ExportFields(*project, automation::MaterialsLibrary(), *design, line.grid));
    Print(stdout, L"Wrote " + line.output + L"\n");
}

/// Says what ended a task.
ExitStatus Complain(const std::runtime_error& error, ExitStatus status) {
    kinora::programs::Print(stderr, std::string("error: ") + error.what() + "\n");
    return status;
}

/// Runs a task on a project file.
ExitStatus RunFileTask(const automation::CommandLine& line) {
    try {
        if (line.task == automation::CommandLine::Task::List) {
            const auto project = model::OpenProjectFile(kinora::programs::AbsolutePath(line.project));
            kinora::programs::Print(stdout, model::ListProject(*project, line.isFull));
        } else {
            ExportActiveDesign(line);
        }
        return ExitStatus::Done;
    } catch (const model::DesktopError& error) {
        return Complain(error, error.Code() == model::ErrorCode::WriteFile ? ExitStatus::Failed : ExitStatus::BadInput);
    } catch (const std::runtime_error& error) {
        return Complain(error, ExitStatus::BadInput);
    }
}

ExitStatus PrintResult(const automation::RegistrationResult& result) {
    Print(result.succeeded ? stdout : stderr, result.text);
    return result.succeeded ? ExitStatus::Done : ExitStatus::Failed;
}

ExitStatus Run(const automation::CommandLine& line) {
    switch (line.task) {
    case automation::CommandLine::Task::Serve:
        return Serve(line);
    case automation::CommandLine::Task::Register:
        return PrintResult(automation::RegisterServer(line.alsoDefault));
    case automation::CommandLine::Task::Unregister:
        return PrintResult(automation::UnregisterServer());
    case automation::CommandLine::Task::List:
    case automation::CommandLine::Task::ExportFields:
        return RunFileTask(line);
    case automation::CommandLine::Task::Bad:
        Print(stderr, line.problem + L"\n" + automation::UsageText());
        return ExitStatus::BadInput;
    default:
        Print(stdout, automation::UsageText());
        return ExitStatus::Done;
    }
}

} // namespace

int wmain(int count, wchar_t** values) {
    // Listings in a file are the same on every system.
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    return kinora::programs::RunMain(count, values, "vantor-sim", [](const std::vector<std::string>& words) {
        std::vector<std::wstring> wideWords(words.size());
        std::transform(words.begin(), words.end(), wideWords.begin(), WideFromUtf8);
        return Run(automation::ParseCommandLine(wideWords));
    });
}

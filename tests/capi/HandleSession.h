#pragma once

#include "tests/capi/Handle.h"
#include "tests/fault/SessionDesktop.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace capi {

/// One call of a session.
struct Call {
    std::string name;
    std::function<kv_status()> run;
};

/// The whole coupled run of tests/fault, through the C interface: launch, project, geometry, three bodies, steps with
/// and without reports, messages, save, close, quit.
class HandleSession : public SessionDesktop {
public:
    explicit HandleSession(const Size& size = {});
    ~HandleSession();

    /// The calls in their order.
    std::vector<Call> Calls();
    /// Lets go of everything, launches a new desktop and runs a short session. True when all of it succeeded.
    bool Repair();

    kv_coupling* Handle() { return *m_handle; }
    void DeleteHandle() { m_handle.reset(); }
    /// The records of the run.
    const std::vector<kv_group>& Groups() const { return m_groupRecords; }
    const std::vector<kv_material>& Materials() const { return m_materialRecords; }
    const std::vector<kv_pose>& Poses(int step) const { return m_poseRecords[static_cast<std::size_t>(step)]; }
    /// What the last step gave.
    const std::vector<kv_load>& Loads() const { return m_loads; }
    std::size_t LoadCount() const { return m_loadCount; }
    std::int32_t SolverStatus() const { return m_solverStatus; }

    kv_status Create();
    kv_status Init();
    kv_status Step(int number);

private:
    void MakeRecords();
    kv_status Messages();

    std::vector<std::vector<const char*>> m_objects;
    std::vector<kv_group> m_groupRecords;
    std::vector<kv_material> m_materialRecords;
    std::vector<std::vector<kv_pose>> m_poseRecords;
    std::vector<kv_load> m_loads;
    std::size_t m_loadCount = 0;
    std::int32_t m_solverStatus = 0;
    std::unique_ptr<capi::Handle> m_handle;
};

} // namespace capi

#pragma once

#include "host/core/RunFiles.h"

namespace kinora::host {

/// The project, the state and the results of an earlier run, set aside under other names while a new one is set up in
/// their place. A set-up that fails, or is killed, puts them back.
class EarlierRun {
public:
    /// @param files  must outlive this
    explicit EarlierRun(const RunFiles& files) : m_files(files) {}

    /// True while an earlier run is set aside, be it by a process that was killed.
    bool IsAside() const;
    /// @throws InputError  the project cannot be moved; all is as it was
    void SetAside() const;
    /// Replaces the new run by the earlier one.
    /// @throws RunError  a file cannot be moved
    void PutBack() const;
    /// From now on the new run counts.
    void Discard() const;

private:
    const RunFiles& m_files;
};

} // namespace kinora::host

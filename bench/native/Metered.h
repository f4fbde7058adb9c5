#pragma once

#include <memory>

/// A desktop that passes every call on to the simulator and keeps the time that this takes. While it is registered, the
/// version "Metered" selects it.
class MeteredDesktop {
public:
    MeteredDesktop();
    ~MeteredDesktop();
    MeteredDesktop(const MeteredDesktop&) = delete;
    MeteredDesktop& operator=(const MeteredDesktop&) = delete;

    /// Seconds inside of the simulator since the last call of this.
    static double TakeSeconds();

private:
    struct Entry;
    std::unique_ptr<Entry> m_entry;
};

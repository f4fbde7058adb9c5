#pragma once

#include <memory>
#include <string>

namespace capi {

/// A desktop that answers at once and keeps nothing, so that nothing but the library's own threads and time counts: for
/// tests of threads, and for measuring. While one lives, every launch of its version makes an application of its own.
class InstantDesktop {
public:
    /// @param version  as `kv_launch` takes it
    /// @param folder   the folder of all projects
    /// @param refuses  whether now and then a save, a solve or an answer goes wrong
    InstantDesktop(const std::string& version, const std::string& folder, bool refuses);
    ~InstantDesktop();
    InstantDesktop(const InstantDesktop&) = delete;
    InstantDesktop& operator=(const InstantDesktop&) = delete;

    /// Applications that somebody still holds.
    static long Live();

private:
    struct Entry;
    std::unique_ptr<Entry> m_entry;
};

/// Every load that it tells: newtons, and millinewton-metres.
constexpr double instantLoad = 0.125;

} // namespace capi

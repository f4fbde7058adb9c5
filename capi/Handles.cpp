#include "capi/Handles.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <utility>

namespace kinora::capi::Handles {
namespace {

struct Table {
    std::mutex mutex;
    std::map<std::uintptr_t, std::shared_ptr<Handle>> rows;
    std::uintptr_t last = 0;
};

Table& TheTable() {
    // Never destroyed: threads of handles that nobody has deleted run until the process has ended.
    static Table& table = *new Table;
    return table;
}

std::uintptr_t NumberOf(const kv_coupling* handle) {
    return reinterpret_cast<std::uintptr_t>(handle);
}

} // namespace

kv_coupling* Add(std::shared_ptr<Handle> handle) {
    Table& table = TheTable();
    const std::lock_guard<std::mutex> lock(table.mutex);
    const std::uintptr_t number = table.last + 1;
    table.rows.emplace(number, std::move(handle));
    table.last = number;
    return reinterpret_cast<kv_coupling*>(number); // NOLINT(performance-no-int-to-ptr): nobody follows it
}

std::shared_ptr<Handle> Find(const kv_coupling* handle) noexcept {
    Table& table = TheTable();
    const std::lock_guard<std::mutex> lock(table.mutex);
    const auto row = table.rows.find(NumberOf(handle));
    return row == table.rows.end() ? nullptr : row->second;
}

std::shared_ptr<Handle> Remove(const kv_coupling* handle) noexcept {
    Table& table = TheTable();
    const std::lock_guard<std::mutex> lock(table.mutex);
    const auto row = table.rows.find(NumberOf(handle));
    if (row == table.rows.end()) {
        return nullptr;
    }
    std::shared_ptr<Handle> removed = std::move(row->second);
    table.rows.erase(row);
    return removed;
}

} // namespace kinora::capi::Handles
